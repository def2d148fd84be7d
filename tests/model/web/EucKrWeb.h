// kx7text tests - the Encoding Standard's EUC-KR.
#ifndef KX7_TESTS_MODEL_WEB_EUCKRWEB_H
#define KX7_TESTS_MODEL_WEB_EUCKRWEB_H

#include "tests/model/web/WebHandler.h"
#include "tests/model/web/WebIndex.h"

namespace kx7test {

/** "EUC-KR decoder" */
class EucKrWebDecoder : public WebHandler {
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
            if (within(byte, 0x41, 0xFE))
                pointer = (leading - 0x81) * 190 + (byte - 0x41);
            int const codePoint = pointer == WEB_NULL ? WEB_NULL : WebIndex::named("euc-kr").codePoint(pointer);
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

/** "EUC-KR encoder" */
class EucKrWebEncoder : public WebHandler {
public:
    WebResult handle(WebQueue&, int codePoint) override
    {
        if (codePoint == END_OF_QUEUE)
            return WebResult::finished();
        if (isAscii(codePoint))
            return WebResult::of({codePoint});
        int const pointer = WebIndex::named("euc-kr").pointer(codePoint);
        if (pointer == WEB_NULL)
            return WebResult::error(codePoint);
        return WebResult::of({pointer / 190 + 0x81, pointer % 190 + 0x41});
    }
};

}  // namespace kx7test

#endif
