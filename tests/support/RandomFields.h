#pragma once

#include <random>
#include <type_traits>

namespace halvex::test {

/// Fills the fields that a record's field list names; the same from run to run.
class RandomFields {
public:
    explicit RandomFields(unsigned seed = 1980) : m_rng(seed) {}

    template <class T>
    void operator()(T& value) {
        if constexpr (std::is_floating_point_v<T>) {
            value = static_cast<T>(number(-1e6, 1e6));
        } else if constexpr (std::is_same_v<T, bool>) {
            value = m_rng() % 2 != 0;
        } else {
            value = static_cast<T>(m_rng());
        }
    }
    double number(double from, double to) { return std::uniform_real_distribution(from, to)(m_rng); }

private:
    std::mt19937 m_rng;
};

template <class Record>
Record randomRecord(RandomFields& random) {
    Record record;
    Record::fields(random, record);
    return record;
}

}  // namespace halvex::test
