// Stand in for both ports: what a session sends is kept, and what it receives is the test's choice.
#pragma once

#include <QByteArray>

#include <functional>
#include <string>
#include <vector>

namespace scripted_ports {

/// One call of ExecuteCommand.
struct Exchange {
    QByteArray frame;
    int capacity = 0;
    int auxTimeout = 0;
    int responseTimeoutMs = 0;
};

/// The calls so far.
extern std::vector<Exchange> exchanges;
/// How the ports were opened ("serial /dev/x", "pcsc name") and closed ("close"), in order.
extern std::vector<std::string> events;
/// The answers to come; when they run out, nothing is answered.
extern std::vector<QByteArray> answers;
/// Answers that the port announces without writing them, as a failing escape command does.
extern bool announcesUnwrittenAnswers;
/// What closing returns.
extern bool closingSucceeds;
/// Called after each exchange, with its number from 1 on.
extern std::function<void(std::size_t)> afterExchange;

void reset();

} // namespace scripted_ports
