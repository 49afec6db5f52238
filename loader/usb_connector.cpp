#include "loader/usb_connector.h"

#include "app/run_mode.h"
#include "db/database_file.h"
#include "devices/pcsc_port.h"
#include "devices/serial_port.h"
#include "loader/frames.h"

#include <algorithm>
#include <limits>

namespace {

constexpr char kConceptTable[] = "R_DBINFO";
constexpr int kFirstConcept = 1;
constexpr int kLastConcept = 15;

// Header and concepts of a request together; the size bytes are not counted. The terminal's limit
// stays as it is, although a frame may so grow beyond 255 bytes.
constexpr std::size_t kHeaderBudget = 9;
constexpr std::size_t kRequestBudget = 255;
constexpr std::size_t kConceptOverhead = 2;

constexpr char kAckByte = 0x05;
constexpr char kNackByte = 0x06;
constexpr int kNackTextOffset = 3;
constexpr int kLargestDataAnswer = 255;

constexpr qint64 kEndingMillisecondsPerMiB = 20000;
constexpr qint64 kMiB = 1048576;

int byteAt(const QByteArray& bytes, int i) {
    return static_cast<unsigned char>(bytes[i]);
}

/// Decimal; what is no number counts as 0.
int toNumber(const std::string& text) {
    return QString::fromStdString(text).toInt();
}

bool isConcept(int number) {
    return number >= kFirstConcept && number <= kLastConcept;
}

/// Compares an answer, of which less than expected may have come, byte by byte.
int countMatches(const QByteArray& answer, const QByteArray& expected) {
    int matches = 0;
    for (int i = 0; i < answer.size(); ++i) {
        VEXALog(kLogBytes, "Byte %d : %02X", i, byteAt(answer, i));
        const bool match = answer[i] == expected[i];
        VEXALog(kLogBytes, "%s", match ? "TRUE" : "FALSE");
        matches += match ? 1 : 0;
    }
    return matches;
}

std::string hexadecimalText(const QByteArray& bytes) {
    return "0x" + bytes.toHex().toUpper().toStdString();
}

} // namespace

VEXAUsbConnector::VEXAUsbConnector() {
    const FunctionTrace trace("VEXAUsbConnector::VEXAUsbConnector");
}

VEXAUsbConnector::VEXAUsbConnector(VEXADevice terminal, VEXADbManager database, int padNumber)
    : device(terminal), dbManager(database), requestAddress(requestAddressOf(padNumber)),
      replyAddress(replyAddressOf(padNumber)), pad(padNumber) {
    VEXALog(kLogEntry, "VEXAUsbConnector::VEXAUsbConnector - pad=%d", pad);
    const ExitTrace trace("VEXAUsbConnector::VEXAUsbConnector");
}

// The trace is made first and ends last: the lines of the getters stand within the copy's.
VEXAUsbConnector::VEXAUsbConnector(VEXAUsbConnector& other)
    : VEXAUsbConnector(FunctionTrace("VEXAUsbConnector::VEXAUsbConnector"), other) {
}

VEXAUsbConnector::VEXAUsbConnector(const FunctionTrace& /*trace*/, VEXAUsbConnector& other)
    : device(other.getVEXADevice()), dbManager(other.getVEXADbManager()),
      requestAddress(requestAddressOf(other.pad)), replyAddress(replyAddressOf(other.pad)),
      pad(other.pad) {
}

VEXAUsbConnector::~VEXAUsbConnector() {
    const FunctionTrace trace("VEXAUsbConnector::~VEXAUsbConnector");
}

VEXADevice VEXAUsbConnector::getVEXADevice() {
    const FunctionTrace trace("VEXAUsbConnector::getVEXADevice");
    return device;
}

VEXADbManager VEXAUsbConnector::getVEXADbManager() {
    const FunctionTrace trace("VEXAUsbConnector::getVEXADbManager");
    return dbManager;
}

int VEXAUsbConnector::getNumpad() {
    const FunctionTrace trace("VEXAUsbConnector::getNumpad");
    return pad;
}

int VEXAUsbConnector::operate(std::string& response) {
    const FunctionTrace trace("VEXAUsbConnector::operate");
    int code = openCheckedDatabase();
    if (code == kLoadSucceeded) {
        code = initializeTerminal();
    }
    if (code != kLoadSucceeded) {
        return code;
    }
    std::vector<std::string> concepts;
    std::vector<std::string> values;
    readConcepts(concepts, values);
    const QByteArray frame = stringToBytes(concepts, values);
    return sendRequestFrame(frame, response) ? kLoadSucceeded : kRequestRefused;
}

int VEXAUsbConnector::openCheckedDatabase() {
    if (!dbManager.checkCoherence()) {
        VEXALog(kLogError, "The database is not coherent");
        printInCmdMode("\nThe database is not coherent");
        return kDatabaseNotCoherent;
    }
    VEXALog(kLogInfo, "The database is coherent");
    dbFile = std::make_unique<QFile>(absolutePath(dbManager.getDbFile()));
    if (!dbFile->open(QIODevice::ReadOnly)) {
        VEXALog(kLogError, "Could not open database file");
        return kDatabaseNotOpened;
    }
    if (dbFile->size() > std::numeric_limits<std::int32_t>::max()) {
        VEXALog(kLogError, "Database file is too large : %lld bytes", dbFile->size());
        return kDatabaseNotOpened;
    }
    return kLoadSucceeded;
}

int VEXAUsbConnector::initializeTerminal() {
    bool answered = false;
    if (!initializeConnection(answered)) {
        VEXALog(kLogError, "Protocol initialization failed");
        return kInitAnswerWrong;
    }
    if (!answered) {
        VEXALog(kLogError, "No response from the terminal");
        printInCmdMode("\nNo response from the terminal");
        return kNoAnswer;
    }
    VEXALog(kLogInfo, "Protocol initialization succeeded");
    return kLoadSucceeded;
}

bool VEXAUsbConnector::initializeConnection(bool& answered) {
    const FunctionTrace trace("VEXAUsbConnector::initializeConnection");
    if (device.isPCSC()) {
        port = std::make_unique<VEXAPcscPort>(device.getDevicePath().c_str());
    } else {
        port = std::make_unique<VEXASerialPort>(device.getPortCOM());
    }
    const QByteArray expected = initAnswer(replyAddress);
    const QByteArray answer = exchange(initFrame(requestAddress), expected.size());
    VEXALog(kLogInfo, "Init Request sent, size of answer : %d", answer.size());
    const int matches = countMatches(answer, expected);
    answered = !answer.isEmpty();
    return matches == answer.size();
}

void VEXAUsbConnector::readConcepts(std::vector<std::string>& concepts,
                                    std::vector<std::string>& values) {
    dbManager.setQuery(kConceptTable);
    (void)dbManager.getFields(kConceptTable);
    std::size_t budget = kHeaderBudget;
    for (auto row = dbManager.getNextData(kConceptTable); !row.empty();
         row = dbManager.getNextData(kConceptTable)) {
        if (row.size() < 2) {
            VEXALog(kLogInfo, "Read an invalid line from R_DBINFO : it has one column only");
            continue;
        }
        if (!isConcept(toNumber(row[0]))) {
            VEXALog(kLogInfo, "Read an invalid line from R_DBINFO : NUM_CONCEPT is out of range");
            continue;
        }
        VEXALog(kLogInfo, "Read a valid line from R_DBINFO");
        budget += row[1].size() + kConceptOverhead;
        if (budget > kRequestBudget) {
            return;
        }
        concepts.push_back(row[0]);
        values.push_back(row[1]);
    }
}

QByteArray VEXAUsbConnector::stringToBytes(std::vector<std::string> concepts,
                                           std::vector<std::string> values) {
    const FunctionTrace trace("VEXAUsbConnector::stringToBytes");
    const auto size = static_cast<std::int32_t>(dbFile ? dbFile->size() : 0);
    const QByteArray fileSize = sizeBytes(size);
    VEXALog(kLogInfo, "File size = %d, We need %d bytes", size, fileSize.size());
    for (int i = 0; i < fileSize.size(); ++i) {
        VEXALog(kLogInfo, "A byte got : %02X", byteAt(fileSize, i));
    }
    QByteArray conceptBlock;
    for (std::size_t k = 0; k < std::min(concepts.size(), values.size()); ++k) {
        conceptBlock += conceptEntry(toNumber(concepts[k]), values[k]);
    }
    return requestFrame(requestAddress, fileSize, conceptBlock);
}

bool VEXAUsbConnector::sendRequestFrame(QByteArray frame, std::string& response) {
    const FunctionTrace trace("VEXAUsbConnector::sendRequestFrame");
    // The CRC of the expected answer belongs to the PAD of the first session of the process, also
    // in sessions with another PAD. The terminals have always been met with it; keep it.
    static const std::uint8_t crcAddress = replyAddress;
    const QByteArray expected = requestAnswer(replyAddress, crcAddress);
    const QByteArray answer = exchange(frame, expected.size());
    VEXALog(kLogInfo, "Request message : number of bytes = %d", frame.size());
    for (int i = 0; i < frame.size(); ++i) {
        VEXALog(kLogBytes, "Byte sent %d : %02X", i, byteAt(frame, i));
    }
    VEXALog(kLogInfo, "Request response : number of bytes = %d", answer.size());
    response = hexadecimalText(answer);
    const int matches = countMatches(answer, expected);
    const bool accepted = answer.size() == expected.size() && matches == expected.size();
    VEXALog(kLogInfo,
            accepted ? "Succeeded to send request frame" : "Failed to send request frame");
    return accepted;
}

int VEXAUsbConnector::sendDataFrame(QString& nackText) {
    const FunctionTrace trace("VEXAUsbConnector::sendDataFrame");
    const QByteArray block = dbFile ? dbFile->read(kLargestBlock) : QByteArray();
    if (block.isEmpty() && dbFile && dbFile->error() != QFileDevice::NoError) {
        // Without its rest the load must not be ended as if it were complete.
        VEXALog(kLogError, "Could not read database file : %s",
                qUtf8Printable(dbFile->errorString()));
        return kNoAnswer;
    }
    if (block.isEmpty()) {
        VEXALog(kLogError, "All data in file have been read");
        return kEndOfFile;
    }
    const QByteArray frame = dataFrame(block);
    VEXALog(kLogInfo, "First byte : %02X", byteAt(frame, 0));
    VEXALog(kLogInfo, "Second byte: %02X", byteAt(frame, 1));
    VEXALog(kLogInfo, "Third byte : %02X", byteAt(frame, 2));
    VEXALog(kLogInfo, "Number of bytes sent : %d", frame.size());
    const QByteArray answer = exchange(frame, kLargestDataAnswer);
    VEXALog(kLogBytes, "Number of bytes received : %d", answer.size());
    for (int i = 0; i < answer.size(); ++i) {
        VEXALog(kLogBytes, "Data %d : Response = %02X", i, byteAt(answer, i));
    }
    return interpretDataAnswer(answer, block.size(), nackText);
}

int VEXAUsbConnector::interpretDataAnswer(const QByteArray& answer, int blockLength,
                                          QString& nackText) {
    if (answer.isEmpty()) {
        VEXALog(kLogError, "No response was received");
        printInCmdMode("\nNo response from the terminal");
        return kNoAnswer;
    }
    if (answer[0] == kAckByte) {
        bytesSent += blockLength;
        return kLoadSucceeded;
    }
    VEXALog(kLogInfo, "Data block refused : rep=0x%02x", byteAt(answer, 0));
    if (answer[0] == kNackByte && answer.size() <= kNackTextOffset) {
        return kIncompleteNack;
    }
    if (answer[0] == kNackByte) {
        // One character is the whole reason, whatever else the terminal says.
        nackText = QString(QLatin1Char(answer[kNackTextOffset]));
        return kNack;
    }
    VEXALog(kLogError, "Data block was refused");
    return kBlockRefused;
}

bool VEXAUsbConnector::sendEndingFrame() {
    const FunctionTrace trace("VEXAUsbConnector::sendEndingFrame");
    const QByteArray expected = endingAnswer();
    // The terminal files the database away before it answers, so the wait follows the file's size,
    // also where that makes it short (or, at 0, endless). The port's own time-outs are not used.
    const qint64 size = dbFile ? dbFile->size() : 0;
    const auto timeout = static_cast<std::int32_t>(size * kEndingMillisecondsPerMiB / kMiB);
    const QByteArray answer = exchange(endingFrame(), expected.size(), timeout);
    if (answer.size() < expected.size()) {
        VEXALog(kLogError, "Not received enough bytes as response");
        return false;
    }
    for (int i = 0; i < expected.size(); ++i) {
        VEXALog(kLogError, "Byte received : %02X - Desired received byte : %02X", byteAt(answer, i),
                byteAt(expected, i));
        if (answer[i] != expected[i]) {
            VEXALog(kLogError, "Error on ending frame");
            return false;
        }
    }
    VEXALog(kLogInfo, "Succeeded to send ending frame");
    return true;
}

bool VEXAUsbConnector::closeConnection() {
    const FunctionTrace trace("VEXAUsbConnector::closeConnection");
    return port ? port->closePort() : true;
}

int VEXAUsbConnector::getProgress() {
    const FunctionTrace trace("VEXAUsbConnector::getProgress");
    constexpr std::uint32_t kPercent = 100;
    // 32 bits that wrap: the figure of files above 21474836 bytes is known to be wrong.
    const auto product =
        static_cast<std::int32_t>(static_cast<std::uint32_t>(bytesSent) * kPercent);
    const qint64 size = dbFile ? dbFile->size() : 0;
    return size == 0 ? 0 : static_cast<int>(product / size);
}

QByteArray VEXAUsbConnector::exchange(const QByteArray& frame, int largestAnswer,
                                      std::optional<int> timeoutMs) {
    if (!port) {
        return {};
    }
    QByteArray answer(largestAnswer, '\0');
    int length = largestAnswer;
    // The port only reads the frame. Its result is not asked for: the length and the bytes say all
    // that counts.
    (void)port->ExecuteCommand(
        const_cast<unsigned char*>(reinterpret_cast<const unsigned char*>(frame.constData())),
        frame.size(), reinterpret_cast<unsigned char*>(answer.data()), &length,
        timeoutMs.value_or(port->getAuxTimeout()), timeoutMs.value_or(port->getResponseTimeout()));
    answer.truncate(std::clamp(length, 0, largestAnswer));
    return answer;
}
