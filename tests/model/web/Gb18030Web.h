// kx7text tests - the Encoding Standard's GBK and gb18030.
#ifndef KX7_TESTS_MODEL_WEB_GB18030WEB_H
#define KX7_TESTS_MODEL_WEB_GB18030WEB_H

#include "tests/model/web/WebHandler.h"
#include "tests/model/web/WebIndex.h"

namespace kx7test {

/** "index gb18030 ranges code point" */
inline int gb18030RangesCodePoint(int pointer)
{
    if ((pointer > 39419 && pointer < 189000) || pointer > 1237575)
        return WEB_NULL;
    if (pointer == 7457)
        return 0xE7C7;
    int offset = 0;
    int codePointOffset = 0;
    for (auto const& [rangePointer, rangeCodePoint] : WebIndex::named("gb18030-ranges").entries()) {
        if (rangePointer <= pointer) {
            offset = rangePointer;
            codePointOffset = rangeCodePoint;
        }
    }
    return codePointOffset + pointer - offset;
}

/** "index gb18030 ranges pointer" */
inline int gb18030RangesPointer(int codePoint)
{
    if (codePoint == 0xE7C7)
        return 7457;
    int offset = 0;
    int pointerOffset = 0;
    for (auto const& [rangePointer, rangeCodePoint] : WebIndex::named("gb18030-ranges").entries()) {
        if (rangeCodePoint <= codePoint) {
            offset = rangeCodePoint;
            pointerOffset = rangePointer;
        }
    }
    return pointerOffset + codePoint - offset;
}

/** "gb18030 decoder", GBK's too */
class Gb18030WebDecoder : public WebHandler {
public:
    WebResult handle(WebQueue& queue, int byte) override
    {
        if (byte == END_OF_QUEUE && m_first == 0 && m_second == 0 && m_third == 0)
            return WebResult::finished();
        if (byte == END_OF_QUEUE) {
            m_first = m_second = m_third = 0;
            return WebResult::error();
        }
        if (m_third != 0)
            return fourth(queue, byte);
        if (m_second != 0) {
            if (within(byte, 0x81, 0xFE)) {
                m_third = byte;
                return WebResult::more();
            }
            queue.restore({m_second, byte});
            m_first = m_second = 0;
            return WebResult::error();
        }
        if (m_first != 0)
            return second(queue, byte);
        if (isAscii(byte))
            return WebResult::of({byte});
        if (byte == 0x80)
            return WebResult::of({0x20AC});
        if (within(byte, 0x81, 0xFE)) {
            m_first = byte;
            return WebResult::more();
        }
        return WebResult::error();
    }

private:
    WebResult second(WebQueue& queue, int byte)
    {
        if (within(byte, 0x30, 0x39)) {
            m_second = byte;
            return WebResult::more();
        }
        int const leading = m_first;
        m_first = 0;
        int pointer = WEB_NULL;
        int const offset = byte < 0x7F ? 0x40 : 0x41;
        if (within(byte, 0x40, 0x7E) || within(byte, 0x80, 0xFE))
            pointer = (leading - 0x81) * 190 + (byte - offset);
        int const codePoint = pointer == WEB_NULL ? WEB_NULL : WebIndex::named("gb18030").codePoint(pointer);
        if (codePoint != WEB_NULL)
            return WebResult::of({codePoint});
        if (isAscii(byte))
            queue.restore({byte});
        return WebResult::error();
    }

    WebResult fourth(WebQueue& queue, int byte)
    {
        if (!within(byte, 0x30, 0x39)) {
            queue.restore({m_second, m_third, byte});
            m_first = m_second = m_third = 0;
            return WebResult::error();
        }
        int const codePoint = gb18030RangesCodePoint(
            (m_first - 0x81) * (10 * 126 * 10) + (m_second - 0x30) * (10 * 126) + (m_third - 0x81) * 10 + byte - 0x30);
        m_first = m_second = m_third = 0;
        if (codePoint == WEB_NULL)
            return WebResult::error();
        return WebResult::of({codePoint});
    }

    int m_first = 0x00, m_second = 0x00, m_third = 0x00;
};

/** "gb18030 encoder" */
class Gb18030WebEncoder : public WebHandler {
public:
    explicit Gb18030WebEncoder(bool isGbk) : m_isGbk(isGbk) {}

    WebResult handle(WebQueue&, int codePoint) override
    {
        if (codePoint == END_OF_QUEUE)
            return WebResult::finished();
        if (isAscii(codePoint))
            return WebResult::of({codePoint});
        if (codePoint == 0xE5E5)
            return WebResult::error(codePoint);
        if (m_isGbk && codePoint == 0x20AC)
            return WebResult::of({0x80});
        for (auto const& row : SIDE_TABLE) {
            if (row.codePoint == codePoint)
                return WebResult::of({row.first, row.second});
        }
        int pointer = WebIndex::named("gb18030").pointer(codePoint);
        if (pointer != WEB_NULL) {
            int const leading = pointer / 190 + 0x81;
            int const trailing = pointer % 190;
            int const offset = trailing < 0x3F ? 0x40 : 0x41;
            return WebResult::of({leading, trailing + offset});
        }
        if (m_isGbk)
            return WebResult::error(codePoint);
        pointer = gb18030RangesPointer(codePoint);
        int const byte1 = pointer / (10 * 126 * 10);
        pointer = pointer % (10 * 126 * 10);
        int const byte2 = pointer / (10 * 126);
        pointer = pointer % (10 * 126);
        int const byte3 = pointer / 10;
        int const byte4 = pointer % 10;
        return WebResult::of({byte1 + 0x81, byte2 + 0x30, byte3 + 0x81, byte4 + 0x30});
    }

private:
    struct Row {
        int codePoint, first, second;
    };

    /** Keeps the bytes that private-use characters had in the editions before 2022. */
    static constexpr Row SIDE_TABLE[] = {
        {0xE78D, 0xA6, 0xD9}, {0xE78E, 0xA6, 0xDA}, {0xE78F, 0xA6, 0xDB}, {0xE790, 0xA6, 0xDC}, {0xE791, 0xA6, 0xDD},
        {0xE792, 0xA6, 0xDE}, {0xE793, 0xA6, 0xDF}, {0xE794, 0xA6, 0xEC}, {0xE795, 0xA6, 0xED}, {0xE796, 0xA6, 0xF3},
        {0xE81E, 0xFE, 0x59}, {0xE826, 0xFE, 0x61}, {0xE82B, 0xFE, 0x66}, {0xE82C, 0xFE, 0x67}, {0xE832, 0xFE, 0x6D},
        {0xE843, 0xFE, 0x7E}, {0xE854, 0xFE, 0x90}, {0xE864, 0xFE, 0xA0},
    };

    bool m_isGbk;
};

}  // namespace kx7test

#endif
