// kx7text tests - what encoding_rs makes of bytes and code points, asked line by line on standard input.
//
//     d NAME BYTES         code points, and !BEGIN-END for each malformed sequence: the decoder of the encoding
//     x NAME BYTES         code points: "decode", where a byte-order mark decides
//     e NAME CODEPOINT...  bytes, and !CODEPOINT for each that has none: the encoder of the encoding
//     h NAME CODEPOINT...  bytes: "encode", where such a one becomes a character reference
//     l LABEL              the name of the encoding, or "-"; LABEL is given as bytes
//     o NAME               the name of the output encoding
//
// All in hexadecimal, offsets too; bytes without spaces between them; an answer a line.
use encoding_rs::{DecoderResult, EncoderResult, Encoding};
use std::fmt::Write as _;
use std::io::{BufRead, BufWriter, Write};

fn bytes_of(hex: &str) -> Vec<u8> {
    (0..hex.len() / 2).map(|i| u8::from_str_radix(&hex[2 * i..2 * i + 2], 16).unwrap()).collect()
}

fn text_of<'a>(words: impl Iterator<Item = &'a str>) -> String {
    words.map(|word| char::from_u32(u32::from_str_radix(word, 16).unwrap()).unwrap()).collect()
}

fn put_text(answer: &mut String, text: &str) {
    for character in text.chars() {
        write!(answer, "{:X} ", character as u32).unwrap();
    }
}

fn put_bytes(answer: &mut String, bytes: &[u8]) {
    for byte in bytes {
        write!(answer, "{:02X}", byte).unwrap();
    }
}

fn decode(encoding: &'static Encoding, bytes: &[u8], answer: &mut String) {
    let mut decoder = encoding.new_decoder_without_bom_handling();
    let mut buffer = vec![0; decoder.max_utf8_buffer_length_without_replacement(bytes.len()).unwrap() + 16];
    let mut read = 0;
    loop {
        let (result, consumed, written) = decoder.decode_to_utf8_without_replacement(&bytes[read..], &mut buffer, true);
        read += consumed;
        put_text(answer, std::str::from_utf8(&buffer[..written]).unwrap());
        match result {
            DecoderResult::InputEmpty => return,
            DecoderResult::OutputFull => {}
            DecoderResult::Malformed(length, after) => {
                let end = read as i64 - after as i64;
                write!(answer, "!{:X}-{:X} ", end - length as i64, end).unwrap();
            }
        }
    }
}

fn encode(encoding: &'static Encoding, text: &str, answer: &mut String) {
    let mut encoder = encoding.new_encoder();
    let mut buffer = vec![0; 16 + 8 * text.len()];
    let mut read = 0;
    loop {
        let (result, consumed, written) = encoder.encode_from_utf8_without_replacement(&text[read..], &mut buffer, true);
        read += consumed;
        put_bytes(answer, &buffer[..written]);
        match result {
            EncoderResult::InputEmpty => return,
            EncoderResult::OutputFull => {}
            EncoderResult::Unmappable(character) => write!(answer, "!{:X} ", character as u32).unwrap(),
        }
    }
}

fn main() {
    let mut out = BufWriter::new(std::io::stdout());
    for line in std::io::stdin().lock().lines() {
        let line = line.unwrap();
        let mut words = line.split(' ').filter(|word| !word.is_empty());
        let command = words.next().unwrap();
        let name = words.next().unwrap_or("");
        let mut answer = String::new();
        if command == "l" {
            answer += Encoding::for_label(&bytes_of(name)).map_or("-", |encoding| encoding.name());
        } else {
            let encoding = Encoding::for_label(name.as_bytes()).unwrap();
            match command {
                "d" => decode(encoding, &bytes_of(words.next().unwrap_or("")), &mut answer),
                "x" => put_text(&mut answer, &encoding.decode(&bytes_of(words.next().unwrap_or(""))).0),
                "e" => encode(encoding, &text_of(words), &mut answer),
                "h" => put_bytes(&mut answer, &encoding.encode(&text_of(words)).0),
                "o" => answer += encoding.output_encoding().name(),
                _ => panic!("{}", command),
            }
        }
        writeln!(out, "{}", answer.trim_end()).unwrap();
    }
}
