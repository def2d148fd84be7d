// kx7text tests - the Encoding Standard's legacy single-byte encodings and x-user-defined.
#ifndef KX7_TESTS_MODEL_WEB_SINGLEBYTEWEB_H
#define KX7_TESTS_MODEL_WEB_SINGLEBYTEWEB_H

#include "tests/model/web/WebHandler.h"
#include "tests/model/web/WebIndex.h"

namespace kx7test {

/** "single-byte decoder" */
class SingleByteWebDecoder : public WebHandler {
public:
    explicit SingleByteWebDecoder(WebIndex const& index) : m_index(index) {}

    WebResult handle(WebQueue&, int byte) override
    {
        if (byte == END_OF_QUEUE)
            return WebResult::finished();
        if (isAscii(byte))
            return WebResult::of({byte});
        int const codePoint = m_index.codePoint(byte - 0x80);
        if (codePoint == WEB_NULL)
            return WebResult::error();
        return WebResult::of({codePoint});
    }

private:
    WebIndex const& m_index;
};

/** "single-byte encoder" */
class SingleByteWebEncoder : public WebHandler {
public:
    explicit SingleByteWebEncoder(WebIndex const& index) : m_index(index) {}

    WebResult handle(WebQueue&, int codePoint) override
    {
        if (codePoint == END_OF_QUEUE)
            return WebResult::finished();
        if (isAscii(codePoint))
            return WebResult::of({codePoint});
        int const pointer = m_index.pointer(codePoint);
        if (pointer == WEB_NULL)
            return WebResult::error(codePoint);
        return WebResult::of({pointer + 0x80});
    }

private:
    WebIndex const& m_index;
};

/** "x-user-defined decoder" */
class UserDefinedWebDecoder : public WebHandler {
public:
    WebResult handle(WebQueue&, int byte) override
    {
        if (byte == END_OF_QUEUE)
            return WebResult::finished();
        if (isAscii(byte))
            return WebResult::of({byte});
        return WebResult::of({0xF780 + byte - 0x80});
    }
};

/** "x-user-defined encoder" */
class UserDefinedWebEncoder : public WebHandler {
public:
    WebResult handle(WebQueue&, int codePoint) override
    {
        if (codePoint == END_OF_QUEUE)
            return WebResult::finished();
        if (isAscii(codePoint))
            return WebResult::of({codePoint});
        if (within(codePoint, 0xF780, 0xF7FF))
            return WebResult::of({codePoint - 0xF780 + 0x80});
        return WebResult::error(codePoint);
    }
};

}  // namespace kx7test

#endif
