// kx7text tests - random operations on a string, held against a model after each.
#include "tests/support/Rounds.h"
#include "tests/text/StringPlayer.h"

TEST(StringModel, AgreesAfterEachOf100000RandomOperations)
{
    kx7test::Rounds rounds(100, 7);
    kx7test::StringPlayer player([&](size_t below) { return rounds.below(below); });
    while (rounds.next() && !HasFailure())
        player.play(1000);
}
