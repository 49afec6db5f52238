// What the simulated terminal writes down: a trace for people, the frames for comparison, and the
// times of a load for measuring.
#pragma once

#include "simulator/bytes.h"

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

namespace simulator {

class Journal {
public:
    /// Opens the files that are asked for; an empty name asks for none, "-" for standard error.
    /// \return false, with the reason in `error`, when one cannot be opened
    bool open(const std::string& traceFile, const std::string& frameFile,
              const std::string& timeFile, std::string& error);

    /// One line of the trace.
    void trace(const std::string& line);

    /// One frame from the host, or one answer to it as it was sent.
    void frameFromHost(const std::uint8_t* bytes, std::size_t size);
    void answerToHost(const Bytes& bytes);

    /// The first byte from the host, with the time on the monotonic clock.
    void firstByte();

    /// The accepted request, and the end of its data: the time between them is the data phase.
    void dataPhaseBegins();
    void dataPhaseEnds(std::size_t blocks, std::size_t bytes);

private:
    struct Closer {
        void operator()(std::FILE* file) const;
    };
    using File = std::unique_ptr<std::FILE, Closer>;

    static bool openOne(const std::string& name, File& file, std::string& error);
    void writeFrame(char direction, const std::uint8_t* bytes, std::size_t size);

    File m_trace;
    File m_frames;
    File m_times;
    std::chrono::steady_clock::time_point m_dataPhaseBegin;
    bool m_hasFirstByte = false;
};

} // namespace simulator
