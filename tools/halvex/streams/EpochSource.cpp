#include "tools/halvex/streams/EpochSource.h"

#include "tools/halvex/systems/EnabledSystems.h"

namespace halvex::tool {

EpochSource::EpochSource(const std::string& name, const StreamChoice& choice) : m_name(name) {
    ByteInput input;
    if (!input.open(name)) throw Failure(input.error().value_or(FormatError{name, 0, "cannot be opened"}));
    if (rtcm3::isStream(input)) {
        m_stream = datedReader(name, choice.time);
        if (choice.station) {
            m_stream->setStation(*choice.station);
        } else {
            m_stream->keepToFirstStation();
        }
        m_stream->open(std::move(input));
        return;
    }
    LineReader lines;
    lines.open(std::move(input));
    if (!m_file.open(std::move(lines))) throw Failure(m_file.error());
}

EpochSource::Result EpochSource::next(rinex::ObservationEpoch& epoch) {
    const Result result = m_stream ? nextOfStream(epoch) : m_file.next(epoch);
    if (result == Result::error && !m_stream) m_error = m_file.error().text();
    leaveOutDisabled(epoch);
    return result;
}

EpochSource::Result EpochSource::nextOfStream(rinex::ObservationEpoch& epoch) {
    using StreamResult = rtcm3::StreamReader::Result;
    while (!m_ended) {
        const StreamResult result = m_stream->next(epoch);
        if (result == StreamResult::epoch) {
            m_any = true;
            return Result::epoch;
        }
        if (result != StreamResult::end) continue;
        m_ended = true;
        if (m_stream->error()) {
            m_error = m_stream->error()->text();
            return Result::error;
        }
        if (!m_any && m_stream->losses().undatedMessages != 0) {
            m_error = m_name + ": nothing in the stream tells its date: give it with --rtcm-time";
            return Result::error;
        }
    }
    return Result::end;
}

const rinex::ObservationHeader& EpochSource::header() const {
    return m_stream ? m_stream->header() : m_file.header();
}

std::uint32_t EpochSource::headerChanges() const {
    return m_stream ? m_stream->headerChanges() : m_file.headerChanges();
}

const std::string& EpochSource::marker() const {
    return m_stream ? m_stream->header().markerNumber : m_file.header().markerName;
}

std::optional<StreamCounts> EpochSource::streamCounts() const {
    if (!m_stream) return std::nullopt;
    return countsOf(*m_stream);
}

std::uint64_t EpochSource::bytesRead() const {
    return m_stream ? m_stream->frames().input().bytesRead() : m_file.lines().bytesRead();
}

std::uint64_t EpochSource::fileSize() const {
    return m_stream ? m_stream->frames().input().fileSize() : m_file.lines().fileSize();
}

}  // namespace halvex::tool
