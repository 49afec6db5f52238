#include "simulator/journal.h"

namespace simulator {

void Journal::Closer::operator()(std::FILE* file) const {
    if (file != stderr) {
        (void)std::fclose(file);
    }
}

bool Journal::openOne(const std::string& name, File& file, std::string& error) {
    if (name.empty()) {
        return true;
    }
    file.reset(name == "-" ? stderr : std::fopen(name.c_str(), "w"));
    if (!file) {
        error = "cannot write " + name;
    }
    return file != nullptr;
}

bool Journal::open(const std::string& traceFile, const std::string& frameFile,
                   const std::string& timeFile, std::string& error) {
    return openOne(traceFile, m_trace, error) && openOne(frameFile, m_frames, error) &&
           openOne(timeFile, m_times, error);
}

void Journal::trace(const std::string& line) {
    if (m_trace) {
        (void)std::fprintf(m_trace.get(), "%s\n", line.c_str());
        (void)std::fflush(m_trace.get());
    }
}

void Journal::frameFromHost(const std::uint8_t* bytes, std::size_t size) {
    writeFrame('>', bytes, size);
}

void Journal::answerToHost(const Bytes& bytes) {
    writeFrame('<', bytes.data(), bytes.size());
}

void Journal::writeFrame(char direction, const std::uint8_t* bytes, std::size_t size) {
    if (m_frames) {
        (void)std::fprintf(m_frames.get(), "%c %s\n", direction, hexadecimal(bytes, size).c_str());
        (void)std::fflush(m_frames.get());
    }
}

void Journal::firstByte() {
    if (m_times && !m_hasFirstByte) {
        const std::chrono::duration<double> now =
            std::chrono::steady_clock::now().time_since_epoch();
        (void)std::fprintf(m_times.get(), "first byte at %.6f seconds\n", now.count());
        (void)std::fflush(m_times.get());
        m_hasFirstByte = true;
    }
}

void Journal::dataPhaseBegins() {
    m_dataPhaseBegin = std::chrono::steady_clock::now();
}

void Journal::dataPhaseEnds(std::size_t blocks, std::size_t bytes) {
    if (m_times) {
        const std::chrono::duration<double> time =
            std::chrono::steady_clock::now() - m_dataPhaseBegin;
        (void)std::fprintf(m_times.get(), "%zu blocks %zu bytes %.6f seconds\n", blocks, bytes,
                           time.count());
        (void)std::fflush(m_times.get());
    }
}

} // namespace simulator
