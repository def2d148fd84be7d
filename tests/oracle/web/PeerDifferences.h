// kx7text tests - where encoding_rs 0.8.31 is not what the Encoding Standard of 2026-05-21 says.
//
// All that differs comes from GB 18030's edition of 2022, which the standard adopted after that version. 18 two-byte
// codes stood for private-use characters; they stand for the characters proper, which had four-byte codes only.
//  - The decoders of GBK and gb18030 return the new characters for these codes (encoding_rs: the private ones).
//  - The encoder of gb18030 writes the new characters as these codes (encoding_rs: as four bytes).
//  - The encoder of GBK has the new characters (encoding_rs: it does not).
// The four-byte codes decode as before, and the encoders write the private-use characters as before.
#ifndef KX7_TESTS_ORACLE_WEB_PEERDIFFERENCES_H
#define KX7_TESTS_ORACLE_WEB_PEERDIFFERENCES_H

#include <string>

#include "tests/model/web/WebCodec.h"

namespace kx7test {

struct PeerDifference {
    char const* code;       // two bytes
    char32_t codePoint;     // the standard's
    char32_t privateUse;    // the peer's
    char const* fourBytes;  // what the peer's gb18030 encodes the standard's code point as
};

inline constexpr PeerDifference PEER_DIFFERENCES[] = {
    {"\xA6\xD9", 0xFE10, 0xE78D, "\x84\x31\x82\x36"}, {"\xA6\xDA", 0xFE12, 0xE78E, "\x84\x31\x82\x38"},
    {"\xA6\xDB", 0xFE11, 0xE78F, "\x84\x31\x82\x37"}, {"\xA6\xDC", 0xFE13, 0xE790, "\x84\x31\x82\x39"},
    {"\xA6\xDD", 0xFE14, 0xE791, "\x84\x31\x83\x30"}, {"\xA6\xDE", 0xFE15, 0xE792, "\x84\x31\x83\x31"},
    {"\xA6\xDF", 0xFE16, 0xE793, "\x84\x31\x83\x32"}, {"\xA6\xEC", 0xFE17, 0xE794, "\x84\x31\x83\x33"},
    {"\xA6\xED", 0xFE18, 0xE795, "\x84\x31\x83\x34"}, {"\xA6\xF3", 0xFE19, 0xE796, "\x84\x31\x83\x35"},
    {"\xFE\x59", 0x9FB4, 0xE81E, "\x82\x35\x90\x37"}, {"\xFE\x61", 0x9FB5, 0xE826, "\x82\x35\x90\x38"},
    {"\xFE\x66", 0x9FB6, 0xE82B, "\x82\x35\x90\x39"}, {"\xFE\x67", 0x9FB7, 0xE82C, "\x82\x35\x91\x30"},
    {"\xFE\x6D", 0x9FB8, 0xE832, "\x82\x35\x91\x31"}, {"\xFE\x7E", 0x9FB9, 0xE843, "\x82\x35\x91\x32"},
    {"\xFE\x90", 0x9FBA, 0xE854, "\x82\x35\x91\x33"}, {"\xFE\xA0", 0x9FBB, 0xE864, "\x82\x35\x91\x34"},
};

inline bool differsInPeer(std::string const& encoding)
{
    return encoding == "GBK" || encoding == "gb18030";
}

/** The model's result for these bytes as the peer gives it. */
inline WebDecoded asPeerDecodes(std::string const& encoding, std::string const& bytes, WebDecoded result)
{
    if (!differsInPeer(encoding) || result.isError)
        return result;
    for (PeerDifference const& difference : PEER_DIFFERENCES) {
        if (bytes.compare(result.begin, result.end - result.begin, difference.code) == 0)
            result.codePoints = difference.privateUse;
    }
    return result;
}

/** The model's result for these code points as the peer gives it. */
inline WebEncoded asPeerEncodes(std::string const& encoding, std::u32string const& codePoints, WebEncoded result)
{
    if (!differsInPeer(encoding) || result.isError)
        return result;
    for (PeerDifference const& difference : PEER_DIFFERENCES) {
        if (codePoints[result.begin] != difference.codePoint)
            continue;
        if (encoding == "GBK")
            return {true, {}, difference.codePoint, result.begin, result.end};
        result.bytes = difference.fourBytes;
    }
    return result;
}

}  // namespace kx7test

#endif
