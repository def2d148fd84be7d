// kx7text - what the encoders of sets with codes of one and two bytes share: their runs (internal).
#ifndef KX7_CONVERTERS_DOUBLEBYTEENCODER_H
#define KX7_CONVERTERS_DOUBLEBYTEENCODER_H

#include "kx7/converters/Walk.h"
#include "kx7/kernels/Kernels.h"

namespace kx7 {

/** An encoder whose units are written as a table says, where that says anything. */
class DoubleByteEncoder : public EncoderBase {
public:
    /** @param codes as of UnitCodes.h; may be null */
    explicit DoubleByteEncoder(unsigned short const* codes) : m_codes(codes) {}

    void run(unsigned short const*& in, unsigned short const* end, unsigned char*& out, unsigned char* outEnd) const
    {
        if (m_codes)
            kernels().encodeDoubleByte(m_codes, in, end, out, outEnd);
    }

    size_t countRun(unsigned short const*& in, unsigned short const* end) const
    {
        return m_codes ? kernels().countDoubleByte(m_codes, in, end) : 0;
    }

private:
    unsigned short const* m_codes;
};

}  // namespace kx7

#endif
