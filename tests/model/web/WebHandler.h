// kx7text tests - what the decoders and encoders of the Encoding Standard have in common.
#ifndef KX7_TESTS_MODEL_WEB_WEBHANDLER_H
#define KX7_TESTS_MODEL_WEB_WEBHANDLER_H

#include <vector>

#include "tests/model/web/WebQueue.h"

namespace kx7test {

/** What one call of a handler returns. */
struct WebResult {
    enum Kind { FINISHED, ITEMS, ERROR, CONTINUE };

    Kind kind;
    std::vector<int> items;  // ITEMS: code points of a decoder, bytes of an encoder; ERROR: an encoder's code point
    // The standard gives no offsets. These say where a sequence of ISO-2022-JP begins and ends:
    size_t before = 0;      // ERROR: bytes before those read since the last result that are the malformed sequence
    size_t kept = 0;        // ERROR: bytes read after the malformed sequence and not restored
    bool complete = false;  // CONTINUE: what was read since the last result is an escape sequence

    static WebResult finished() { return {FINISHED, {}}; }
    static WebResult more() { return {CONTINUE, {}}; }
    static WebResult of(std::vector<int> items) { return {ITEMS, std::move(items)}; }
    static WebResult error() { return {ERROR, {}}; }
    static WebResult error(int codePoint) { return {ERROR, {codePoint}}; }
};

/** A decoder or an encoder instance with its state. */
class WebHandler {
public:
    virtual ~WebHandler() = default;

    /** The algorithm of the standard that bears the decoder's or encoder's name; `item` was read from the queue. */
    virtual WebResult handle(WebQueue& queue, int item) = 0;
};

inline bool within(int value, int first, int last)
{
    return value >= first && value <= last;
}

/** An ASCII byte or an ASCII code point; END_OF_QUEUE is neither. */
inline bool isAscii(int item)
{
    return within(item, 0x00, 0x7F);
}

}  // namespace kx7test

#endif
