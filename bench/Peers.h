// kx7text benchmarks - the converters that are compared, behind one interface.
#ifndef KX7_BENCH_PEERS_H
#define KX7_BENCH_PEERS_H

#include <memory>
#include <string>
#include <vector>

#include "kx7/charset/KX7CharSet.h"

namespace kx7bench {

/** A character set under the names of all peers; null where a peer lacks it. */
struct CharSet {
    KX7CharSet charSet;
    char const* name;
    char const* icu;
    char const* iconv;
};

/** Converts whole texts with an open converter, into buffers that are large enough. */
class Peer {
public:
    virtual ~Peer() = default;

    /** Bytes, zero-terminated behind `size`, to UTF-16. Returns units written. */
    virtual size_t decode(char const* bytes, size_t size, char16_t* dest, size_t room) = 0;
    /** UTF-16, zero-terminated behind `units`, to bytes. Returns bytes written. */
    virtual size_t encode(char16_t const* text, size_t units, char* dest, size_t room) = 0;
    /** Bytes to UTF-8. */
    virtual size_t toUTF8(char const* bytes, size_t size, char* dest, size_t room) = 0;
    /** UTF-8 to bytes. */
    virtual size_t fromUTF8(char const* utf8, size_t size, char* dest, size_t room) = 0;
};

/** The three peers by name: "kx7", "icu", "iconv"; null where the peer lacks the character set. */
std::unique_ptr<Peer> openPeer(char const* peer, CharSet const& charSet);

}  // namespace kx7bench

#endif
