#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace os {

/// A few numbers that belong together, published by one thread and read by any number of others as a whole: a reader
/// never sees parts of two publications. Reading takes no lock and writes nothing shared, so readers do not slow each
/// other down. Zeros before the first publication.
///
/// Two copies take turns: a publication goes into the one that is not being read and then becomes current. A reader has
/// to start again only when a whole publication went by while it read; it never waits for a writer that was
/// interrupted.
template <std::size_t Count, class Number = std::int32_t>
class alignas(64) Published {
public:
    using Values = std::array<Number, Count>;

    /// One writer at a time: the caller sees to that.
    void publish(const Values& values) {
        const std::uint32_t next = m_current.load(std::memory_order_relaxed) + 1;
        // Released, so that whoever sees one of these values also sees the publication before and starts again.
        for (std::size_t i = 0; i < Count; ++i) m_copies[next & 1][i].store(values[i], std::memory_order_release);
        m_current.store(next, std::memory_order_release);
    }

    [[nodiscard]] Values read() const { return read(std::make_index_sequence<Count>()); }

private:
    template <std::size_t... Index>
    Values read(std::index_sequence<Index...>) const {
        std::uint32_t current = m_current.load(std::memory_order_acquire);
        for (;;) {
            const auto& copy = m_copies[current & 1];
            const Values values{copy[Index].load(std::memory_order_acquire)...};
            const std::uint32_t after = m_current.load(std::memory_order_acquire);
            if (after == current) return values;
            current = after;
        }
    }

    std::atomic<std::uint32_t> m_current{0};
    std::array<std::array<std::atomic<Number>, Count>, 2> m_copies{};
};

}  // namespace os
