// kx7text tests - malformed UTF-8 against ICU and Python: what is an error, where the first one begins, how long it is.
#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "kx7/convert.h"
#include "tests/support/Hex.h"

using namespace kx7test;

namespace {

/** A byte of each class that a decoder of UTF-8 tells apart, and the first and last ones of the larger classes. */
std::string const CLASSES("\x00\x41\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC\xED\xEE\xEF"
                          "\xF0\xF1\xF3\xF4\xF5\xF7\xF8\xFF",
                          27);

std::string allBytes()
{
    std::string bytes;
    for (int byte = 0; byte < 0x100; ++byte)
        bytes += static_cast<char>(byte);
    return bytes;
}

/** Calls `check` with every sequence of `length` of the bytes, the last one changing fastest, until it says false. */
template <class Check>
void everySequence(std::string const& bytes, size_t length, Check check)
{
    std::string text(length, bytes[0]);
    size_t digits[4] = {};
    for (;;) {
        if (!check(text))
            return;
        size_t at = length;
        do {
            if (at == 0)
                return;
            --at;
            digits[at] = (digits[at] + 1) % bytes.size();
            text[at] = bytes[digits[at]];
        } while (digits[at] == 0);
    }
}

/** The first malformed sequence of a text, as kx7::Validity has it. */
struct Malformed {
    size_t offset;
    size_t length;

    bool operator==(Malformed const& other) const { return offset == other.offset && length == other.length; }
};

/** ICU's converter, which stops at the first error. */
class IcuReader {
public:
    IcuReader()
    {
        UErrorCode error = U_ZERO_ERROR;
        m_converter = ucnv_open("UTF-8", &error);
        ucnv_setToUCallBack(m_converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        EXPECT_TRUE(U_SUCCESS(error)) << u_errorName(error);
    }
    ~IcuReader() { ucnv_close(m_converter); }
    IcuReader(IcuReader const&) = delete;
    IcuReader& operator=(IcuReader const&) = delete;

    Malformed read(std::string const& text)
    {
        UErrorCode error = U_ZERO_ERROR;
        ucnv_resetToUnicode(m_converter);
        char const* in = text.data();
        char16_t* out = units;
        ucnv_toUnicode(m_converter, &out, std::end(units), &in, text.data() + text.size(), nullptr, true, &error);
        unitCount = static_cast<size_t>(out - units);
        if (U_SUCCESS(error))
            return {text.size(), 0};
        char bytes[8];
        int8_t length = sizeof bytes;
        error = U_ZERO_ERROR;
        ucnv_getInvalidChars(m_converter, bytes, &length, &error);
        return {static_cast<size_t>(in - text.data()) - static_cast<size_t>(length), static_cast<size_t>(length)};
    }

    char16_t units[16];
    size_t unitCount = 0;

private:
    UConverter* m_converter = nullptr;
};

/** Validation and a strict stream say the same as ICU; false when that has been wrong too often. */
class AgainstIcu {
public:
    bool operator()(std::string const& text)
    {
        Malformed const expected = m_icu.read(text);
        m_malformed += expected.length != 0 ? 1 : 0;
        kx7::Validity const validity = kx7::validateUtf8(text);
        char16_t units[8];
        m_decoder.reset();
        kx7::StreamResult const step = m_decoder.convert(text, {units, std::size(units)}, true);
        kx7::Error const& error = m_decoder.firstError();
        Malformed const decoded = step.status == kx7::Status::INVALID
                                      ? Malformed{static_cast<size_t>(error.byteOffset), error.length}
                                      : Malformed{step.consumed, 0};
        bool const right = Malformed{validity.offset, validity.length} == expected && decoded == expected &&
                           std::equal(units, units + step.written, m_icu.units, m_icu.units + m_icu.unitCount);
        if (!right) {
            ADD_FAILURE() << hex(text) << ": ICU finds " << expected.length << " bytes at " << expected.offset
                          << ", validateUtf8 " << validity.length << " at " << validity.offset << ", the stream "
                          << decoded.length << " at " << decoded.offset;
            ++m_failures;
        }
        return m_failures < 20;
    }

    size_t malformed() const { return m_malformed; }

private:
    IcuReader m_icu;
    kx7::Decoder m_decoder{KX7CS_UTF8};
    size_t m_malformed = 0;
    int m_failures = 0;
};

}  // namespace

TEST(StrictUtf8Oracle, EverySequenceOfUpToThreeBytesAndOfFourByClassAgainstIcu)
{
    AgainstIcu check;
    std::string const all = allBytes();
    for (size_t length = 1; length <= 3; ++length)
        everySequence(all, length, [&](std::string const& text) { return check(text); });
    // Of three bytes all but 128^3 of ASCII, 2 * 1920 * 128 with a character of two bytes and 61,440 of three.
    EXPECT_EQ(check.malformed(),
              128u + (65536 - 128 * 128 - 1920) + ((1u << 24) - 128 * 128 * 128 - 2 * 1920 * 128 - 61440));
    everySequence(CLASSES, 4, [&](std::string const& text) { return check(text); });
}

TEST(StrictUtf8Oracle, EverySequenceOfUpToTwoBytesAndByClassOfUpToFourAgainstPython)
{
    struct Part {
        std::string bytes;
        size_t length;
    };
    // After so much text the kernels find what is malformed.
    std::string const front(128, 'x');
    for (Part const& part : {Part{allBytes(), 1}, Part{allBytes(), 2}, Part{CLASSES, 3}, Part{CLASSES, 4}}) {
        std::string command = "/usr/bin/python3 tests/oracle/python_utf8.py " + std::to_string(part.length) + " ";
        for (char const byte : part.bytes)
            command += hexDigits(byte);
        FILE* const output = popen(command.c_str(), "r");
        ASSERT_NE(output, nullptr);
        int failures = 0;
        size_t sequences = 0;
        everySequence(part.bytes, part.length, [&](std::string const& text) {
            Malformed expected = {};
            if (fscanf(output, "%zu %zu", &expected.offset, &expected.length) != 2)
                return false;
            ++sequences;
            kx7::Validity const validity = kx7::validateUtf8(text);
            kx7::Validity const after = kx7::validateUtf8(front + text + front);
            bool const isValid = expected.length == 0;
            kx7::Units const units = kx7::decode(text, KX7CS_UTF8);
            Malformed const decoded = units.status == kx7::Status::INVALID
                                          ? Malformed{static_cast<size_t>(units.first.byteOffset), units.first.length}
                                          : Malformed{text.size(), 0};
            bool const right =
                Malformed{validity.offset, validity.length} == expected && decoded == expected &&
                after.offset == front.size() + (isValid ? text.size() + front.size() : expected.offset) &&
                after.length == expected.length && units.isComplete() == isValid;
            if (!right) {
                ADD_FAILURE() << hex(text) << ": Python finds " << expected.length << " bytes at " << expected.offset
                              << ", validateUtf8 " << validity.length << " at " << validity.offset << ", decode "
                              << decoded.length << " at " << decoded.offset << ", after other text " << after.length
                              << " at " << after.offset;
                ++failures;
            }
            return failures < 20;
        });
        size_t expected = 1;
        for (size_t i = 0; i < part.length; ++i)
            expected *= part.bytes.size();
        EXPECT_EQ(sequences, expected);
        EXPECT_EQ(pclose(output), 0);
    }
}
