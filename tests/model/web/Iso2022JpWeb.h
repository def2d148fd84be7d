// kx7text tests - the Encoding Standard's ISO-2022-JP.
#ifndef KX7_TESTS_MODEL_WEB_ISO2022JPWEB_H
#define KX7_TESTS_MODEL_WEB_ISO2022JPWEB_H

#include "tests/model/web/WebHandler.h"
#include "tests/model/web/WebIndex.h"

namespace kx7test {

/** "ISO-2022-JP decoder" */
class Iso2022JpWebDecoder : public WebHandler {
public:
    WebResult handle(WebQueue& queue, int byte) override
    {
        switch (m_state) {
            case State::ASCII: return ascii(byte);
            case State::ROMAN: return roman(byte);
            case State::KATAKANA: return katakana(byte);
            case State::LEADING: return leadingByte(byte);
            case State::TRAILING: return trailingByte(byte);
            case State::ESCAPE_START: return escapeStart(queue, byte);
            case State::ESCAPE: break;
        }
        return escape(queue, byte);
    }

private:
    enum class State { ASCII, ROMAN, KATAKANA, LEADING, TRAILING, ESCAPE_START, ESCAPE };

    WebResult ascii(int byte)
    {
        if (byte == 0x1B) {
            m_state = State::ESCAPE_START;
            return WebResult::more();
        }
        if (isAscii(byte) && byte != 0x0E && byte != 0x0F) {
            m_output = false;
            return WebResult::of({byte});
        }
        if (byte == END_OF_QUEUE)
            return WebResult::finished();
        m_output = false;
        return WebResult::error();
    }

    WebResult roman(int byte)
    {
        if (byte == 0x1B) {
            m_state = State::ESCAPE_START;
            return WebResult::more();
        }
        if (byte == 0x5C) {
            m_output = false;
            return WebResult::of({0x00A5});
        }
        if (byte == 0x7E) {
            m_output = false;
            return WebResult::of({0x203E});
        }
        if (isAscii(byte) && byte != 0x0E && byte != 0x0F) {
            m_output = false;
            return WebResult::of({byte});
        }
        if (byte == END_OF_QUEUE)
            return WebResult::finished();
        m_output = false;
        return WebResult::error();
    }

    WebResult katakana(int byte)
    {
        if (byte == 0x1B) {
            m_state = State::ESCAPE_START;
            return WebResult::more();
        }
        if (within(byte, 0x21, 0x5F)) {
            m_output = false;
            return WebResult::of({0xFF61 - 0x21 + byte});
        }
        if (byte == END_OF_QUEUE)
            return WebResult::finished();
        m_output = false;
        return WebResult::error();
    }

    WebResult leadingByte(int byte)
    {
        if (byte == 0x1B) {
            m_state = State::ESCAPE_START;
            return WebResult::more();
        }
        if (within(byte, 0x21, 0x7E)) {
            m_output = false;
            m_leading = byte;
            m_state = State::TRAILING;
            return WebResult::more();
        }
        if (byte == END_OF_QUEUE)
            return WebResult::finished();
        m_output = false;
        return WebResult::error();
    }

    WebResult trailingByte(int byte)
    {
        if (byte == 0x1B) {
            m_state = State::ESCAPE_START;
            WebResult result = WebResult::error();
            result.kept = 1;  // the escape sequence begins here
            return result;
        }
        m_state = State::LEADING;
        if (within(byte, 0x21, 0x7E)) {
            int const pointer = (m_leading - 0x21) * 94 + byte - 0x21;
            int const codePoint = WebIndex::named("jis0208").codePoint(pointer);
            if (codePoint == WEB_NULL)
                return WebResult::error();
            return WebResult::of({codePoint});
        }
        return WebResult::error();
    }

    WebResult escapeStart(WebQueue& queue, int byte)
    {
        if (byte == 0x24 || byte == 0x28) {
            m_leading = byte;
            m_state = State::ESCAPE;
            return WebResult::more();
        }
        if (byte != END_OF_QUEUE)
            queue.restore({byte});
        m_output = false;
        m_state = m_outputState;
        return WebResult::error();
    }

    WebResult escape(WebQueue& queue, int byte)
    {
        int const leading = m_leading;
        m_leading = 0x00;
        State state = State::ESCAPE;  // none of those that a sequence selects
        if (leading == 0x28 && byte == 0x42)
            state = State::ASCII;
        if (leading == 0x28 && byte == 0x4A)
            state = State::ROMAN;
        if (leading == 0x28 && byte == 0x49)
            state = State::KATAKANA;
        if (leading == 0x24 && (byte == 0x40 || byte == 0x42))
            state = State::LEADING;
        if (state != State::ESCAPE) {
            m_state = m_outputState = state;
            bool const output = m_output;
            m_output = true;
            WebResult result = output ? WebResult::error() : WebResult::more();
            result.complete = !output;
            if (output)
                result.before = result.kept = 3;  // the escape sequence before this one selected a set in vain
            return result;
        }
        if (byte == END_OF_QUEUE)
            queue.restore({leading});
        else
            queue.restore({leading, byte});
        m_output = false;
        m_state = m_outputState;
        return WebResult::error();
    }

    State m_state = State::ASCII, m_outputState = State::ASCII;
    int m_leading = 0x00;
    bool m_output = false;
};

/** "ISO-2022-JP encoder" */
class Iso2022JpWebEncoder : public WebHandler {
public:
    WebResult handle(WebQueue& queue, int codePoint) override
    {
        if (codePoint == END_OF_QUEUE && m_state != State::ASCII)
            return select(State::ASCII);
        if (codePoint == END_OF_QUEUE)
            return WebResult::finished();
        if (m_state != State::JIS0208 && (codePoint == 0x0E || codePoint == 0x0F || codePoint == 0x1B))
            return WebResult::error(0xFFFD);
        if (m_state == State::ASCII && isAscii(codePoint))
            return WebResult::of({codePoint});
        if (m_state == State::ROMAN &&
            ((isAscii(codePoint) && codePoint != 0x5C && codePoint != 0x7E) || isRomanOnly(codePoint))) {
            if (isAscii(codePoint))
                return WebResult::of({codePoint});
            return WebResult::of({codePoint == 0x00A5 ? 0x5C : 0x7E});
        }
        if (isAscii(codePoint) && m_state != State::ASCII) {
            queue.restore({codePoint});
            return select(State::ASCII);
        }
        if (isRomanOnly(codePoint) && m_state != State::ROMAN) {
            queue.restore({codePoint});
            return select(State::ROMAN);
        }
        if (codePoint == 0x2212)
            codePoint = 0xFF0D;
        if (within(codePoint, 0xFF61, 0xFF9F))
            codePoint = WebIndex::named("iso-2022-jp-katakana").codePoint(codePoint - 0xFF61);
        int const pointer = WebIndex::named("jis0208").pointer(codePoint);
        if (pointer == WEB_NULL) {
            if (m_state == State::JIS0208) {
                queue.restore({codePoint});
                return select(State::ASCII);
            }
            return WebResult::error(codePoint);
        }
        if (m_state != State::JIS0208) {
            queue.restore({codePoint});
            return select(State::JIS0208);
        }
        return WebResult::of({pointer / 94 + 0x21, pointer % 94 + 0x21});
    }

private:
    enum class State { ASCII, ROMAN, JIS0208 };

    static bool isRomanOnly(int codePoint) { return codePoint == 0x00A5 || codePoint == 0x203E; }

    WebResult select(State state)
    {
        m_state = state;
        if (state == State::JIS0208)
            return WebResult::of({0x1B, 0x24, 0x42});
        return WebResult::of({0x1B, 0x28, state == State::ASCII ? 0x42 : 0x4A});
    }

    State m_state = State::ASCII;
};

}  // namespace kx7test

#endif
