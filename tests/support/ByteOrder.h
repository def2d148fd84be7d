// kx7text tests - the byte order of the machine.
#ifndef KX7_TESTS_SUPPORT_BYTEORDER_H
#define KX7_TESTS_SUPPORT_BYTEORDER_H

inline bool isLittleEndian()
{
    unsigned short const one = 1;
    return *reinterpret_cast<unsigned char const*>(&one) == 1;
}

#endif
