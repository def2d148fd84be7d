// kx7text tests - the Encoding Standard's Big5.
#ifndef KX7_TESTS_MODEL_WEB_BIG5WEB_H
#define KX7_TESTS_MODEL_WEB_BIG5WEB_H

#include "tests/model/web/WebHandler.h"
#include "tests/model/web/WebIndex.h"

namespace kx7test {

/** "index Big5 pointer" */
inline int big5Pointer(int codePoint)
{
    static WebIndex const index =
        WebIndex::named("big5").without([](int pointer) { return pointer < (0xA1 - 0x81) * 157; });
    switch (codePoint) {
        case 0x2550:
        case 0x255E:
        case 0x2561:
        case 0x256A:
        case 0x5341:
        case 0x5345: return index.lastPointer(codePoint);
        default: return index.pointer(codePoint);
    }
}

/** "Big5 decoder" */
class Big5WebDecoder : public WebHandler {
public:
    WebResult handle(WebQueue& queue, int byte) override
    {
        if (byte == END_OF_QUEUE && m_leading != 0x00) {
            m_leading = 0x00;
            return WebResult::error();
        }
        if (byte == END_OF_QUEUE)
            return WebResult::finished();
        if (m_leading != 0x00) {
            int const leading = m_leading;
            m_leading = 0x00;
            int pointer = WEB_NULL;
            int const offset = byte < 0x7F ? 0x40 : 0x62;
            if (within(byte, 0x40, 0x7E) || within(byte, 0xA1, 0xFE))
                pointer = (leading - 0x81) * 157 + (byte - offset);
            switch (pointer) {
                case 1133: return WebResult::of({0x00CA, 0x0304});
                case 1135: return WebResult::of({0x00CA, 0x030C});
                case 1164: return WebResult::of({0x00EA, 0x0304});
                case 1166: return WebResult::of({0x00EA, 0x030C});
                default: break;
            }
            int const codePoint = pointer == WEB_NULL ? WEB_NULL : WebIndex::named("big5").codePoint(pointer);
            if (codePoint != WEB_NULL)
                return WebResult::of({codePoint});
            if (isAscii(byte))
                queue.restore({byte});
            return WebResult::error();
        }
        if (isAscii(byte))
            return WebResult::of({byte});
        if (within(byte, 0x81, 0xFE)) {
            m_leading = byte;
            return WebResult::more();
        }
        return WebResult::error();
    }

private:
    int m_leading = 0x00;
};

/** "Big5 encoder" */
class Big5WebEncoder : public WebHandler {
public:
    WebResult handle(WebQueue&, int codePoint) override
    {
        if (codePoint == END_OF_QUEUE)
            return WebResult::finished();
        if (isAscii(codePoint))
            return WebResult::of({codePoint});
        int const pointer = big5Pointer(codePoint);
        if (pointer == WEB_NULL)
            return WebResult::error(codePoint);
        int const leading = pointer / 157 + 0x81;
        int const trailing = pointer % 157;
        int const offset = trailing < 0x3F ? 0x40 : 0x62;
        return WebResult::of({leading, trailing + offset});
    }
};

}  // namespace kx7test

#endif
