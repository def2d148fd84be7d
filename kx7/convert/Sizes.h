// kx7text - sums and products of sizes, none where size_t cannot hold them (internal).
#ifndef KX7_CONVERT_SIZES_H
#define KX7_CONVERT_SIZES_H

#include <cstddef>
#include <optional>

namespace kx7 {

inline std::optional<size_t> product(size_t a, size_t b)
{
    size_t result = 0;
    return __builtin_mul_overflow(a, b, &result) ? std::nullopt : std::optional<size_t>(result);
}

inline std::optional<size_t> sum(std::optional<size_t> a, size_t b)
{
    size_t result = 0;
    return !a || __builtin_add_overflow(*a, b, &result) ? std::nullopt : std::optional<size_t>(result);
}

}  // namespace kx7

#endif
