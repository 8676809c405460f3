#include "tools/halvex/corrections/SsrSet.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "tools/halvex/Tool.h"
#include "tools/halvex/corrections/SsrReport.h"

namespace halvex::tool {

SsrSetWriter::SsrSetWriter(std::string base) : m_base(std::move(base)) {
    std::error_code ignored;
    if (std::filesystem::exists(m_base + "t", ignored)) {
        throw Failure(m_base + "t: is there already; remove the set or choose another folder");
    }
    if (!m_file.Open(m_base.c_str(), false)) {
        throw Failure(fmt::format("{}t: the set cannot be opened: {}", m_base, m_file.GetLastError().message()));
    }
    check();
}

void SsrSetWriter::check() const {
    if (const std::error_code error = m_file.GetLastError()) {
        throw Failure(
            fmt::format("{}: cannot be written: {}; what stands before it is whole", m_base, error.message()));
    }
}

void SsrSetWriter::add(const CHalvexSSRCorr::Message& message) {
    CHalvexUniqueSiteID site;
    site.setUniqueSSRBasedRTProductID(productOf(*message));
    const CHalvexSSRCorr record(site, message);
    m_block.resize(record.getSize());
    record.saveData(m_block.data(), m_block.size());
    m_stamp = std::max(m_stamp, message->epoch);
    m_clock.set(m_stamp);
    m_file.AddBlock(m_block.data(), static_cast<std::uint32_t>(m_block.size()));
    check();
    ++m_records;
    m_bytes += m_block.size();
}

void SsrSetWriter::close() {
    m_file.Flush();
    check();
    m_file.Close();
    check();
}

std::string readSsrSet(const std::string& base, const std::function<void(const CHalvexSSRCorr::Message&)>& onMessage) {
    SetReader reader(base);
    std::uint64_t other = 0;
    const std::uint64_t torn = reader.read(SMjdTime(), [&](std::span<const unsigned char> block) {
        CHalvexSSRCorr record;
        if (record.loadData(block.data(), block.size()) && record.GetMessage()) {
            onMessage(record.GetMessage());
        } else {
            ++other;
        }
        return true;
    });
    if (torn != 0) {
        return fmt::format("{}t: byte {}: the last record is cut off after {} bytes", base, reader.size() - torn, torn);
    }
    return other != 0 ? fmt::format("{}t: {} blocks are no correction messages", base, other) : "";
}

}  // namespace halvex::tool
