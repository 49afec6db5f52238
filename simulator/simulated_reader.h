// A reader with a terminal behind it: takes escape exchanges and hands their commands on.
#pragma once

#include "simulator/reader_options.h"
#include "simulator/terminal_model.h"

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

namespace simulator {

/// Writes down the escape exchanges of all readers, one line each way.
class ExchangeLog {
public:
    /// \param file     takes the bytes; an empty name means none
    /// \param timeFile takes beginning and end of each exchange, on the monotonic clock
    ExchangeLog(const std::string& file, const std::string& timeFile);

    void sent(const std::string& reader, std::uint32_t code, std::size_t capacity,
              const Bytes& bytes);
    /// \param failed what follows are no bytes that reached the host
    void answered(const Bytes& bytes, bool failed);

private:
    struct Closer {
        void operator()(std::FILE* file) const { (void)std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, Closer>;
    static File create(const std::string& name);

    File m_file;
    File m_times;
    std::chrono::steady_clock::time_point m_begin;
};

class SimulatedReader {
public:
    enum class Result { done, refused, tooLong, gone };

    /// \param name how the logs call it; the journal and the log outlive it
    SimulatedReader(std::string name, const ReaderDescription& description,
                    const std::string& storeFolder, Journal& journal, ExchangeLog& log);

    const ReaderDescription& description() const { return m_description; }
    bool isGone() const { return m_gone; }

    /// One escape exchange.
    /// \param answer   what the reader answers, also when it is too long
    /// \param capacity the most bytes that the host takes
    Result exchange(std::uint32_t code, const Bytes& sent, std::size_t capacity, Bytes& answer);

private:
    Result answerTo(std::uint32_t code, const Bytes& sent, std::size_t capacity, Bytes& answer);
    Result showFault(const EscapeFault& fault, Bytes& answer);
    Result askTerminal(const Bytes& sent, Bytes& answer);

    std::string m_name;
    ReaderDescription m_description;
    TerminalModel m_terminal;
    ExchangeLog& m_log;
    unsigned long m_exchanges = 0;
    bool m_gone = false;
};

} // namespace simulator
