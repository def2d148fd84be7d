// kx7text - what the encoders of sets with codes of one and two bytes share: their runs (internal).
#ifndef KX7_CONVERTERS_DOUBLEBYTEENCODER_H
#define KX7_CONVERTERS_DOUBLEBYTEENCODER_H

#include "kx7/base/LookupTable.h"
#include "kx7/converters/EncodeLoop.h"
#include "kx7/kernels/Kernels.h"
#include "kx7/kernels/ShortText.h"

namespace kx7 {

/** An encoder whose units are written as a table says, where that says anything. */
class DoubleByteEncoder : public EncoderBase {
public:
    /**
     * @param codes MultibyteTables::unitCodes, or null
     * @param pairs may be null
     */
    DoubleByteEncoder(unsigned short const* codes, PairUnits const* pairs)
        : m_codes(codes), m_identity(pairs ? pairs->unitIdentity() : Identity::NONE)
    {
    }

    void convertFast(unsigned short const*& in, unsigned short const* end, unsigned char*& out,
                     unsigned char* outEnd) const
    {
        copyShort(m_identity, in, end, out, outEnd);
        if (in != end)
            runKernel(in, end, out, outEnd);
    }

    /** The same without a 0 unit, if that has no code. */
    void runKernel(unsigned short const*& in, unsigned short const* end, unsigned char*& out,
                   unsigned char* outEnd) const
    {
        if (m_codes)
            kernels().encodeDoubleByte(m_codes, in, end, out, outEnd);
    }

    size_t countFast(unsigned short const*& in, unsigned short const* end) const
    {
        return m_codes ? kernels().countDoubleByte(m_codes, in, end) : 0;
    }

    static constexpr bool IS_DIRECT = true;

    static constexpr bool IS_SINGLE = false;
    static std::ptrdiff_t mostDirect() { return kernels().mostDirectToDoubleByte; }

    /** Which units are their own bytes. */
    Identity identity() const { return m_identity; }

    /** What a unit is written as, one byte, two or four; 0 where the encoder has to be asked. */
    unsigned int codeOf(unsigned short unit) const { return m_codes ? m_codes[unit] : 0; }

private:
    unsigned short const* m_codes;
    Identity m_identity;
};

/** The encoder of a set whose units all have their codes in one table. */
class ListedDoubleByteEncoder : public DoubleByteEncoder {
public:
    static constexpr unsigned int MOST_BYTES = 2;

    ListedDoubleByteEncoder(LookupTable<unsigned short> const& fromUnicode, unsigned short const* codes,
                            PairUnits const* pairs)
        : DoubleByteEncoder(codes, pairs), m_fromUnicode(fromUnicode)
    {
    }

    EncodedChar encodeOne(unsigned short const* p, unsigned short const* /*end*/) const
    {
        return EncodedChar::oneOrTwo(m_fromUnicode.get(p[0]), p[0], 1);
    }

private:
    LookupTable<unsigned short> const& m_fromUnicode;
};

}  // namespace kx7

#endif
