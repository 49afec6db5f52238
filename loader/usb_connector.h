// One loading session: a terminal, an opened database, the PAD to load, and the loading protocol
// between them. docs/protocol.md shows the frames.
//
// Owner: the session owns its port and its file object, which live until it is destroyed; a copy
//        starts without either. It is used once.
// Threads: one at a time.
// Failure: a result; the reason is in the log.
#pragma once

#include "app/log.h"
#include "db/db_manager.h"
#include "devices/device.h"
#include "devices/device_port.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Result codes of a load and of its steps. The numbers are the exit statuses that users see.
enum LoadResult : int {
    kLoadSucceeded = 0,       ///< also: step done
    kDatabaseNotCoherent = 1, ///< integrity check failed
    kDatabaseNotOpened = 2,   ///< database file could not be opened
    kInitAnswerWrong = 3,     ///< answer to the initialisation frame differs
    kRequestRefused = 4,      ///< request frame not acknowledged
    kNack = 5,                ///< block refused with a reason
    kIncompleteNack = 6,      ///< block refused, the reason did not come
    kBlockRefused = 7,        ///< block answered by something else
    kEndingNotAcknowledged = 8,
    kEndOfFile = 9, ///< nothing left to send; never leaves the loader
    kCancelled = 10,
    kNoAnswer = 14, ///< nothing came in time
};

class VEXAUsbConnector {
public:
    /// A session that cannot load.
    VEXAUsbConnector();

    /// \param padNumber bits above the lowest four are lost on the wire
    VEXAUsbConnector(VEXADevice terminal, VEXADbManager database, int padNumber);

    /// A fresh session for the same terminal, database and PAD.
    VEXAUsbConnector(VEXAUsbConnector& other);
    VEXAUsbConnector& operator=(const VEXAUsbConnector&) = delete;
    virtual ~VEXAUsbConnector();

    // Copies of what the session was given.
    VEXADevice getVEXADevice();
    VEXADbManager getVEXADbManager();
    int getNumpad();

    /// Prepares a load: checks the database, opens its file and the port, wakes the terminal and
    /// announces the load.
    /// \param response the answer to the request frame as hexadecimal text
    /// \return 0, or the code of the step that failed
    int operate(std::string& response);

    /// Opens the port and wakes the terminal.
    /// \param answered set to whether any byte came back
    /// \return true when no byte differs from the expected answer, so also when none came
    bool initializeConnection(bool& answered);

    /// Builds the request frame from the size of the file, which must be open, and the concepts.
    /// \param concepts concept numbers as text; what is no number counts as 0
    /// \param values   their values, in the same order
    QByteArray stringToBytes(std::vector<std::string> concepts, std::vector<std::string> values);

    /// Sends a request frame.
    /// \param response set to the answer as text: "0x" and two digits a byte
    /// \return true when the terminal accepted it
    bool sendRequestFrame(QByteArray frame, std::string& response);

    /// Sends the next block of the file, which is never sent again whatever the answer.
    /// \param nackText set to the terminal's reason, one character, when the result is kNack
    /// \return 0 acknowledged, 5, 6, 7 or 14 as above, 9 when the file is exhausted
    int sendDataFrame(QString& nackText);

    /// Ends the load. \return true when the terminal acknowledged it
    bool sendEndingFrame();

    /// Closes the port, if one was opened. \return the port's result
    bool closeConnection();

    /// Percentage of the file that the terminal has acknowledged, 0 for a file that is empty or
    /// not open. Above 21474836 acknowledged bytes the figure is wrong, which is known and kept.
    int getProgress();

private:
    VEXAUsbConnector(const FunctionTrace& trace, VEXAUsbConnector& other);

    /// Sends a frame and reads one answer of at most so many bytes.
    /// \param timeoutMs in the place of both of the port's own time-outs
    QByteArray exchange(const QByteArray& frame, int largestAnswer,
                        std::optional<int> timeoutMs = std::nullopt);
    int openCheckedDatabase();
    int initializeTerminal();
    void readConcepts(std::vector<std::string>& concepts, std::vector<std::string>& values);
    int interpretDataAnswer(const QByteArray& answer, int blockLength, QString& nackText);

    VEXADevice device;
    VEXADbManager dbManager;
    std::unique_ptr<VEXADevicePort> port;
    std::unique_ptr<QFile> dbFile;
    std::int32_t bytesSent = 0;
    std::uint8_t requestAddress = 0;
    std::uint8_t replyAddress = 0;
    std::int32_t pad = 0;
};
