// kx7text tests - converters that are not the library's own.
#ifndef KX7_TESTS_CONVERTERS_FOREIGN_H
#define KX7_TESTS_CONVERTERS_FOREIGN_H

#include <algorithm>
#include <cstring>

#include "kx7/charset/Converters.h"
#include "kx7/tables/MappingLists.h"

namespace kx7test {

/** Code page 874 under another type; nothing is overridden. */
class DerivedSingleByte : public KX7CharSetConverterSBCS {
public:
    DerivedSingleByte() : KX7CharSetConverterSBCS(oCP874map, KX7CS_WCP874) {}
};

/** UTF-8 that decodes "A" as "B". */
class DerivedUtf8 : public KX7CharSetConverterUTF8 {
public:
    DerivedUtf8() : KX7CharSetConverterUTF8(KX7CS_UTF8) {}

    unsigned int toUTF16(unsigned short* dest, void const* source, unsigned int capacity, ILLCHAR_OPTYPE op,
                         bool* illegal, int sourceLimit) override
    {
        unsigned int const units = KX7CharSetConverterUTF8::toUTF16(dest, source, capacity, op, illegal, sourceLimit);
        std::replace(dest, dest + units, static_cast<unsigned short>('A'), static_cast<unsigned short>('B'));
        return units;
    }
};

/** An encoding of four bytes a unit, low byte first, which counts the bytes that it looks at. */
class Wide : public KX7CharSetConverter {
public:
    Wide() : KX7CharSetConverter(KX7CS_UTF32) {}

    size_t bytesLookedAt = 0;

    unsigned int getNumUnits(void const*, unsigned int byteCount) override { return byteCount / 4; }
    unsigned int toUTF16(unsigned short* dest, void const* source, unsigned int capacity, ILLCHAR_OPTYPE, bool*,
                         int) override
    {
        unsigned int units = 0;
        bytesLookedAt = 0;
        while (units != capacity) {
            unsigned char bytes[4];
            memcpy(bytes, static_cast<unsigned char const*>(source) + bytesLookedAt, sizeof bytes);
            bytesLookedAt += sizeof bytes;
            if (bytes[0] == 0 && bytes[1] == 0 && bytes[2] == 0 && bytes[3] == 0)
                break;
            dest[units++] = static_cast<unsigned short>(bytes[0] | bytes[1] << 8);
        }
        dest[units] = 0;
        return units;
    }
    unsigned int getNumBytes(unsigned short const*, unsigned int unitCount) override { return unitCount * 4; }
    unsigned int fromUTF16(void* dest, unsigned short const* source, unsigned int capacity, ILLCHAR_OPTYPE,
                           bool*) override
    {
        auto* const out = static_cast<unsigned char*>(dest);
        unsigned int bytes = 0;
        for (; *source != 0 && capacity - bytes >= 4; ++source) {
            unsigned char const unit[] = {static_cast<unsigned char>(*source), static_cast<unsigned char>(*source >> 8),
                                          0, 0};
            memcpy(out + bytes, unit, sizeof unit);
            bytes += 4;
        }
        memset(out + bytes, 0, 4);
        return bytes;
    }
    unsigned int getMinUnitSize() const override { return 4; }
    unsigned int getMaxUnitSize() const override { return 4; }
    unsigned int getNullCharSize() const override { return 4; }
};

}  // namespace kx7test

#endif
