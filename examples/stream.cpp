// kx7text example - converts standard input to UTF-8 in pieces, with what could not be converted in a message.
//
//     stream CHARSET < in > out
#include <cstdio>
#include <string>

#include <kx7/kx7.h>

int main(int argc, char** argv)
{
    std::optional<KX7CharSet> const from = kx7::findCharSet(argc > 1 ? argv[1] : "");
    if (!from || !kx7::hasConverter(*from)) {
        std::fprintf(stderr, "usage: stream CHARSET\n");
        return 2;
    }
    kx7::Transcoder transcoder(*from, KX7CS_UTF8, {kx7::ErrorPolicy::REPLACE});
    char in[100];
    char out[kx7::Transcoder::MINIMUM_CAPACITY];
    bool isLast = false;
    while (!isLast) {
        kx7::Span<char const> rest(in, std::fread(in, 1, sizeof in, stdin));
        isLast = rest.empty();
        kx7::StreamResult step = {};
        do {
            step = transcoder.convert(rest, {out, sizeof out}, isLast);
            std::fwrite(out, 1, step.written, stdout);
            rest = rest.after(step.consumed);
        } while (step.status == kx7::Status::OUTPUT_FULL);
    }
    if (transcoder.errorCount() != 0)
        std::printf("%llu errors, the first at byte %llu in line %llu\n", transcoder.errorCount(),
                    transcoder.firstError().byteOffset, transcoder.firstError().lineFeeds + 1);
    return 0;
}
