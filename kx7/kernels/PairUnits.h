// kx7text - what decoding and counting kernels of the double-byte sets look up (internal).
#ifndef KX7_KERNELS_PAIRUNITS_H
#define KX7_KERNELS_PAIRUNITS_H

#include <cstdlib>

#include "kx7/kernels/Identity.h"

namespace kx7 {

/**
 * The characters of one byte or two that are one unit, in one array over all codes, filled from the tables of a
 * converter. What is not in it is left to the converter's steps.
 */
class PairUnits {
public:
    /** One unit more than there are codes: a gather reads four bytes at each. */
    static constexpr size_t SIZE = 0x10000 + 1;

    /** @param shared SIZE units of a table by the same codes, or null: an array of its own, zeros at first */
    explicit PairUnits(unsigned short* shared)
        : m_own(shared ? nullptr : static_cast<unsigned short*>(calloc(SIZE, sizeof(unsigned short)))),
          m_units(shared ? shared : m_own)
    {
    }
    ~PairUnits() { free(m_own); }
    PairUnits(PairUnits const&) = delete;
    PairUnits& operator=(PairUnits const&) = delete;

    bool complete() const { return m_units != nullptr; }

    /** Enters a byte that is a character. */
    void put(unsigned char byte, unsigned int unit)
    {
        m_units[byte] = static_cast<unsigned short>(unit);
        if (byte < 0x80 && byte != 0 && unit == byte) {
            m_isSame[byte] = 0xFF;
            m_sameBits[byte & 0xF] = static_cast<unsigned char>(m_sameBits[byte & 0xF] | 1 << (byte >> 4));
        }
    }

    /** The 256 units of the pairs that begin with `lead`, to be filled. Bytes below 0x80 must not lead. */
    unsigned short* row(unsigned char lead)
    {
        m_isLead[lead & 0x7F] = 0xFF;
        m_leadBits[lead & 0xF] = static_cast<unsigned char>(m_leadBits[lead & 0xF] | 1 << (lead >> 4 & 7));
        return m_units + lead * size_t{256};
    }

    /** The unit of a byte, or of lead byte * 256 + trail byte; 0 where the decoder has to decide. */
    unsigned short const* units() const { return m_units; }

    /** 0xFF for the bytes from 0x80 that begin a pair: their other meanings are left to the converters. */
    unsigned char const* isLead() const { return m_isLead; }
    /** 0xFF for the bytes below 0x80, 0 not among them, that are their own unit. */
    unsigned char const* isSame() const { return m_isSame; }

    /** The same two sets by the low four bits: a bit for each value of the three above. */
    unsigned char const* leadBits() const { return m_leadBits; }
    unsigned char const* sameBits() const { return m_sameBits; }

    /** mappedTrails()[lead & 0x7F]: length of the run of mapped trail bytes that starts at FIRST_TRAIL. */
    unsigned char const* mappedTrails() const { return m_mappedTrails; }
    static constexpr unsigned char FIRST_TRAIL = 0xA1;

    /** Fills mappedTrails, of zeros before. */
    void findMappedTrails()
    {
        for (unsigned int lead = 0x80; lead < 0x100; ++lead) {
            if (!m_isLead[lead & 0x7F])
                continue;
            unsigned char count = 0;
            while (FIRST_TRAIL + count < 0x100 && m_units[lead << 8 | (FIRST_TRAIL + count)] != 0)
                ++count;
            m_mappedTrails[lead & 0x7F] = count;
        }
    }

    /** Finds out which ASCII stands for itself. @param codes MultibyteTables::unitCodes, or null */
    void findIdentities(unsigned short const* codes)
    {
        m_byteIdentity = identityOf([this](unsigned int byte) { return unsigned{m_units[byte]}; });
        m_unitIdentity =
            codes ? identityOf([codes](unsigned int unit) { return unsigned{codes[unit]}; }) : Identity::NONE;
    }

    /** Of the bytes. */
    Identity byteIdentity() const { return m_byteIdentity; }
    /** Of the units. */
    Identity unitIdentity() const { return m_unitIdentity; }

private:
    unsigned short* m_own;
    unsigned short* m_units;
    unsigned char m_isLead[128] = {};
    unsigned char m_isSame[128] = {};
    unsigned char m_mappedTrails[128] = {};
    unsigned char m_leadBits[16] = {};
    unsigned char m_sameBits[16] = {};
    Identity m_byteIdentity = Identity::NONE;
    Identity m_unitIdentity = Identity::NONE;
};

}  // namespace kx7

#endif
