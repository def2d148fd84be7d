// kx7text tests - the Encoding Standard's UTF-16BE and UTF-16LE, and its replacement encoding: they have no encoder.
#ifndef KX7_TESTS_MODEL_WEB_UTF16WEB_H
#define KX7_TESTS_MODEL_WEB_UTF16WEB_H

#include "tests/model/web/WebHandler.h"
#include "tests/model/web/WebIndex.h"

namespace kx7test {

/** "shared UTF-16 decoder" */
class Utf16WebDecoder : public WebHandler {
public:
    explicit Utf16WebDecoder(bool isBigEndian) : m_isBigEndian(isBigEndian) {}

    WebResult handle(WebQueue& queue, int byte) override
    {
        if (byte == END_OF_QUEUE && (m_leadingByte != WEB_NULL || m_leadingSurrogate != WEB_NULL)) {
            m_leadingByte = m_leadingSurrogate = WEB_NULL;
            return WebResult::error();
        }
        if (byte == END_OF_QUEUE)
            return WebResult::finished();
        if (m_leadingByte == WEB_NULL) {
            m_leadingByte = byte;
            return WebResult::more();
        }
        int const codeUnit = m_isBigEndian ? (m_leadingByte << 8) + byte : (byte << 8) + m_leadingByte;
        m_leadingByte = WEB_NULL;
        if (m_leadingSurrogate != WEB_NULL) {
            int const leadingSurrogate = m_leadingSurrogate;
            m_leadingSurrogate = WEB_NULL;
            if (within(codeUnit, 0xDC00, 0xDFFF))
                return WebResult::of({0x10000 + ((leadingSurrogate - 0xD800) << 10) + (codeUnit - 0xDC00)});
            int const byte1 = codeUnit >> 8;
            int const byte2 = codeUnit & 0x00FF;
            if (m_isBigEndian)
                queue.restore({byte1, byte2});
            else
                queue.restore({byte2, byte1});
            return WebResult::error();
        }
        if (within(codeUnit, 0xD800, 0xDBFF)) {
            m_leadingSurrogate = codeUnit;
            return WebResult::more();
        }
        if (within(codeUnit, 0xDC00, 0xDFFF))
            return WebResult::error();
        return WebResult::of({codeUnit});
    }

private:
    bool m_isBigEndian;
    int m_leadingByte = WEB_NULL, m_leadingSurrogate = WEB_NULL;
};

/** "replacement decoder" */
class ReplacementWebDecoder : public WebHandler {
public:
    WebResult handle(WebQueue&, int byte) override
    {
        if (byte == END_OF_QUEUE)
            return WebResult::finished();
        if (!m_errorReturned) {
            m_errorReturned = true;
            return WebResult::error();
        }
        return WebResult::finished();
    }

private:
    bool m_errorReturned = false;
};

}  // namespace kx7test

#endif
