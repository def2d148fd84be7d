// kx7text tests - the Encoding Standard's Shift_JIS.
#ifndef KX7_TESTS_MODEL_WEB_SHIFTJISWEB_H
#define KX7_TESTS_MODEL_WEB_SHIFTJISWEB_H

#include "tests/model/web/WebHandler.h"
#include "tests/model/web/WebIndex.h"

namespace kx7test {

/** "index Shift_JIS pointer" */
inline int shiftJisPointer(int codePoint)
{
    static WebIndex const index =
        WebIndex::named("jis0208").without([](int pointer) { return within(pointer, 8272, 8835); });
    return index.pointer(codePoint);
}

/** "Shift_JIS decoder" */
class ShiftJisWebDecoder : public WebHandler {
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
            int const offset = byte < 0x7F ? 0x40 : 0x41;
            int const leadingOffset = leading < 0xA0 ? 0x81 : 0xC1;
            if (within(byte, 0x40, 0x7E) || within(byte, 0x80, 0xFC))
                pointer = (leading - leadingOffset) * 188 + byte - offset;
            if (within(pointer, 8836, 10715))
                return WebResult::of({0xE000 - 8836 + pointer});
            int const codePoint = pointer == WEB_NULL ? WEB_NULL : WebIndex::named("jis0208").codePoint(pointer);
            if (codePoint != WEB_NULL)
                return WebResult::of({codePoint});
            if (isAscii(byte))
                queue.restore({byte});
            return WebResult::error();
        }
        if (isAscii(byte) || byte == 0x80)
            return WebResult::of({byte});
        if (within(byte, 0xA1, 0xDF))
            return WebResult::of({0xFF61 - 0xA1 + byte});
        if (within(byte, 0x81, 0x9F) || within(byte, 0xE0, 0xFC)) {
            m_leading = byte;
            return WebResult::more();
        }
        return WebResult::error();
    }

private:
    int m_leading = 0x00;
};

/** "Shift_JIS encoder" */
class ShiftJisWebEncoder : public WebHandler {
public:
    WebResult handle(WebQueue&, int codePoint) override
    {
        if (codePoint == END_OF_QUEUE)
            return WebResult::finished();
        if (isAscii(codePoint) || codePoint == 0x0080)
            return WebResult::of({codePoint});
        if (codePoint == 0x00A5)
            return WebResult::of({0x5C});
        if (codePoint == 0x203E)
            return WebResult::of({0x7E});
        if (within(codePoint, 0xFF61, 0xFF9F))
            return WebResult::of({codePoint - 0xFF61 + 0xA1});
        if (codePoint == 0x2212)
            codePoint = 0xFF0D;
        int const pointer = shiftJisPointer(codePoint);
        if (pointer == WEB_NULL)
            return WebResult::error(codePoint);
        int const leading = pointer / 188;
        int const leadingOffset = leading < 0x1F ? 0x81 : 0xC1;
        int const trailing = pointer % 188;
        int const offset = trailing < 0x3F ? 0x40 : 0x41;
        return WebResult::of({leading + leadingOffset, trailing + offset});
    }
};

}  // namespace kx7test

#endif
