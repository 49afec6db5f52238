// Lets a test read what the code under test logs.
#pragma once

#include "app/log.h"

#include <cstdio>
#include <string>
#include <vector>

/// Opens the log on a nameless file for the time of a test.
class LogCapture {
public:
    LogCapture() : m_file(std::tmpfile()) {
        VEXA_logstop();
        g_logfileStream = m_file;
    }
    ~LogCapture() { VEXA_logstop(); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// The lines so far, each from its prefix on ("VEXALD ..."), without the time.
    std::vector<std::string> lines() const {
        std::vector<std::string> result;
        std::string line;
        std::rewind(m_file);
        for (int c = std::fgetc(m_file); c != EOF; c = std::fgetc(m_file)) {
            if (c != '\n') {
                line.push_back(static_cast<char>(c));
                continue;
            }
            const std::size_t prefix = line.find(" - VEXALD ");
            // A message may hold line feeds; what follows one has no time.
            result.push_back(prefix == std::string::npos ? line : line.substr(prefix + 3));
            line.clear();
        }
        (void)std::fseek(m_file, 0, SEEK_END);
        return result;
    }

    bool contains(const std::string& line) const {
        for (const std::string& written : lines()) {
            if (written == line) {
                return true;
            }
        }
        return false;
    }

    std::size_t count(const std::string& line) const {
        std::size_t found = 0;
        for (const std::string& written : lines()) {
            found += written == line ? 1 : 0;
        }
        return found;
    }

private:
    std::FILE* m_file;
};
