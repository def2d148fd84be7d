// kx7text tests - the Encoding Standard's EUC-JP.
#ifndef KX7_TESTS_MODEL_WEB_EUCJPWEB_H
#define KX7_TESTS_MODEL_WEB_EUCJPWEB_H

#include "tests/model/web/WebHandler.h"
#include "tests/model/web/WebIndex.h"

namespace kx7test {

/** "EUC-JP decoder" */
class EucJpWebDecoder : public WebHandler {
public:
    WebResult handle(WebQueue& queue, int byte) override
    {
        if (byte == END_OF_QUEUE && m_leading != 0x00) {
            m_leading = 0x00;
            return WebResult::error();
        }
        if (byte == END_OF_QUEUE)
            return WebResult::finished();
        if (m_leading == 0x8E && within(byte, 0xA1, 0xDF)) {
            m_leading = 0x00;
            return WebResult::of({0xFF61 - 0xA1 + byte});
        }
        if (m_leading == 0x8F && within(byte, 0xA1, 0xFE)) {
            m_jis0212 = true;
            m_leading = byte;
            return WebResult::more();
        }
        if (m_leading != 0x00) {
            int const leading = m_leading;
            m_leading = 0x00;
            int codePoint = WEB_NULL;
            if (within(leading, 0xA1, 0xFE) && within(byte, 0xA1, 0xFE))
                codePoint =
                    WebIndex::named(m_jis0212 ? "jis0212" : "jis0208").codePoint((leading - 0xA1) * 94 + byte - 0xA1);
            m_jis0212 = false;
            if (codePoint != WEB_NULL)
                return WebResult::of({codePoint});
            if (isAscii(byte))
                queue.restore({byte});
            return WebResult::error();
        }
        if (isAscii(byte))
            return WebResult::of({byte});
        if (byte == 0x8E || byte == 0x8F || within(byte, 0xA1, 0xFE)) {
            m_leading = byte;
            return WebResult::more();
        }
        return WebResult::error();
    }

private:
    bool m_jis0212 = false;
    int m_leading = 0x00;
};

/** "EUC-JP encoder" */
class EucJpWebEncoder : public WebHandler {
public:
    WebResult handle(WebQueue&, int codePoint) override
    {
        if (codePoint == END_OF_QUEUE)
            return WebResult::finished();
        if (isAscii(codePoint))
            return WebResult::of({codePoint});
        if (codePoint == 0x00A5)
            return WebResult::of({0x5C});
        if (codePoint == 0x203E)
            return WebResult::of({0x7E});
        if (within(codePoint, 0xFF61, 0xFF9F))
            return WebResult::of({0x8E, codePoint - 0xFF61 + 0xA1});
        if (codePoint == 0x2212)
            codePoint = 0xFF0D;
        int const pointer = WebIndex::named("jis0208").pointer(codePoint);
        if (pointer == WEB_NULL)
            return WebResult::error(codePoint);
        return WebResult::of({pointer / 94 + 0xA1, pointer % 94 + 0xA1});
    }
};

}  // namespace kx7test

#endif
