// kx7text tests - the Encoding Standard's UTF-8.
#ifndef KX7_TESTS_MODEL_WEB_UTF8WEB_H
#define KX7_TESTS_MODEL_WEB_UTF8WEB_H

#include "tests/model/web/WebHandler.h"

namespace kx7test {

/** "UTF-8 decoder" */
class Utf8WebDecoder : public WebHandler {
public:
    WebResult handle(WebQueue& queue, int byte) override
    {
        if (byte == END_OF_QUEUE && m_needed != 0) {
            m_needed = 0;
            return WebResult::error();
        }
        if (byte == END_OF_QUEUE)
            return WebResult::finished();
        if (m_needed == 0)
            return first(byte);
        if (!within(byte, m_lower, m_upper)) {
            m_codePoint = m_needed = m_seen = 0;
            m_lower = 0x80;
            m_upper = 0xBF;
            queue.restore({byte});
            return WebResult::error();
        }
        m_lower = 0x80;
        m_upper = 0xBF;
        m_codePoint = (m_codePoint << 6) | (byte & 0x3F);
        m_seen += 1;
        if (m_seen != m_needed)
            return WebResult::more();
        int const codePoint = m_codePoint;
        m_codePoint = m_needed = m_seen = 0;
        return WebResult::of({codePoint});
    }

private:
    WebResult first(int byte)
    {
        if (isAscii(byte))
            return WebResult::of({byte});
        if (within(byte, 0xC2, 0xDF)) {
            m_needed = 1;
            m_codePoint = byte & 0x1F;
        }
        else if (within(byte, 0xE0, 0xEF)) {
            if (byte == 0xE0)
                m_lower = 0xA0;
            if (byte == 0xED)
                m_upper = 0x9F;
            m_needed = 2;
            m_codePoint = byte & 0xF;
        }
        else if (within(byte, 0xF0, 0xF4)) {
            if (byte == 0xF0)
                m_lower = 0x90;
            if (byte == 0xF4)
                m_upper = 0x8F;
            m_needed = 3;
            m_codePoint = byte & 0x7;
        }
        else {
            return WebResult::error();
        }
        return WebResult::more();
    }

    int m_codePoint = 0, m_seen = 0, m_needed = 0;
    int m_lower = 0x80, m_upper = 0xBF;
};

/** "UTF-8 encoder" */
class Utf8WebEncoder : public WebHandler {
public:
    WebResult handle(WebQueue&, int codePoint) override
    {
        if (codePoint == END_OF_QUEUE)
            return WebResult::finished();
        if (isAscii(codePoint))
            return WebResult::of({codePoint});
        int count = 3;
        int offset = 0xF0;
        if (within(codePoint, 0x80, 0x7FF)) {
            count = 1;
            offset = 0xC0;
        }
        else if (within(codePoint, 0x800, 0xFFFF)) {
            count = 2;
            offset = 0xE0;
        }
        std::vector<int> bytes{(codePoint >> (6 * count)) + offset};
        for (; count > 0; --count)
            bytes.push_back(0x80 | ((codePoint >> (6 * (count - 1))) & 0x3F));
        return WebResult::of(bytes);
    }
};

}  // namespace kx7test

#endif
