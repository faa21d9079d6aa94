#ifndef Vespermoor_Fuzz_Harness_h
#define Vespermoor_Fuzz_Harness_h

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace VespermoorEngine::Fuzz {

/**
 * @brief Splits an input into its pieces, which are separated by a record separator (byte 0x1e).
 */
inline std::vector<std::string> pieces(const std::uint8_t* const data, const std::size_t size) {
    std::vector<std::string> result(1);
    for (std::size_t i = 0; i != size; ++i) {
        if (data[i] == 0x1e) {
            result.emplace_back();
        } else {
            result.back() += char(data[i]);
        }
    }
    return result;
}

/** @brief Ends the run as a finding unless @p ours equals @p expected. */
inline void expectEqual(const std::string& what, const std::string& ours,
                        const std::string& expected) {
    if (ours != expected) {
        std::fprintf(stderr, "FINDING: %s\n--- ours, %zu bytes\n%s\n--- expected, %zu bytes\n%s\n",
                     what.data(), ours.size(), ours.data(), expected.size(), expected.data());
        std::abort();
    }
}

/** @brief Ends the run as a finding unless @p holds. */
inline void expect(const std::string& what, const bool holds) {
    expectEqual(what, holds ? "" : "no", "");
}

} // namespace VespermoorEngine::Fuzz

#endif
