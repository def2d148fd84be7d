// kx7text tests - random operations on a string, held against a model after each.
#include <random>

#include "tests/text/StringPlayer.h"

TEST(StringModel, AgreesAfterEachOf100000RandomOperations)
{
    std::mt19937 engine(7);
    kx7test::StringPlayer([&](size_t below) { return engine() % below; }).play(100000);
}
