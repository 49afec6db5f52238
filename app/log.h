// The log: one text file to which every part of the program traces its work.
//
// Owner: the log owns its file and its buffers; callers keep what they pass.
// Threads: VEXALog and VEXA_logstop may be called from any thread at any time, one after the other
//          under one mutex. VEXA_logstart is called by the main thread, before the worker exists.
// Failure: none reaches the caller. A file that cannot be opened or written means no log.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

/// Levels of a log line: bits of one mask, of which a call passes exactly one.
enum VEXALogLevel : int {
    kLogError = 1,  ///< failures and refusals
    kLogEntry = 2,  ///< entry into a function; the message is its qualified name
    kLogExit = 4,   ///< exit from a function
    kLogInfo = 8,   ///< values read, decisions, results
    kLogBytes = 16, ///< bytes exchanged with the terminal
};

/// Mask of the levels that are written; all of them by default.
extern std::int32_t g_logLevel;

/// Room for the path of the log file, its terminator included.
constexpr std::size_t kLogFileNameSize = 256;

/// Path of the log file, null until a log folder has been configured.
extern char* g_logFileName;

/// The open log file; null means that nothing is logged.
extern std::FILE* g_logfileStream;

/// Opens the log, emptied, as `logVEXA.txt` in a folder, which is created when it is missing.
/// \param logOption the log is opened only when this is exactly "1"
/// \param logPath   the folder, or "." for `Library/Application Support/VEXACharger` in the user's
///                  home folder, which must be known. A path of 256 bytes or more, file name
///                  included, means no log.
void VEXA_logstart(const char* logOption, const char* logPath);

/// Writes one line, flushes it, and starts a new file once this one has reached 1 MiB; the full
/// file is kept under the extension ".old". Does nothing while no file is open.
/// \param level one of VEXALogLevel
/// \param fmt   printf format of the message, which is cut at 511 bytes
void VEXALog(int level, const char* fmt, ...) __attribute__((format(printf, 2, 3)));

/// Closes the log, if it is open.
void VEXA_logstop();

/// Writes the exit line of a function on whichever way the call ends. By itself only where the
/// entry line carries more than the function's name.
class ExitTrace {
public:
    /// \param name qualified name of the function; kept, so it must outlive the trace
    explicit ExitTrace(const char* name) : m_name(name) {}
    ~ExitTrace() { VEXALog(kLogExit, "%s", m_name); }
    ExitTrace(const ExitTrace&) = delete;
    ExitTrace& operator=(const ExitTrace&) = delete;

private:
    const char* m_name;
};

/// Traces one call: its entry line now, its exit line when the call ends.
class FunctionTrace {
public:
    /// \param name qualified name of the function; kept, so it must outlive the trace
    explicit FunctionTrace(const char* name) : m_exit(name) { VEXALog(kLogEntry, "%s", name); }

private:
    ExitTrace m_exit;
};
