// Small files for tests. Everything throws a test failure by way of an empty result.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <ostream>
#include <string>

// How Google Test shows the toolkit's texts when an expectation fails.
inline void PrintTo(const QByteArray& bytes, std::ostream* stream) {
    *stream << '"' << bytes.constData() << '"';
}
inline void PrintTo(const QString& text, std::ostream* stream) {
    PrintTo(text.toUtf8(), stream);
}
inline void PrintTo(const QStringList& texts, std::ostream* stream) {
    PrintTo(texts.join("\n"), stream);
}

inline QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline bool writeFile(const QString& path, const QByteArray& content) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

/// The complete lines of a log file, each from its prefix on, without the time.
inline QStringList logLines(const QString& path) {
    QStringList lines;
    for (const QByteArray& line : readFile(path).split('\n')) {
        const int prefix = line.indexOf(" - VEXALD ");
        lines.append(QString::fromUtf8(prefix < 0 ? line : line.mid(prefix + 3)));
    }
    lines.removeLast(); // what follows the last line feed
    return lines;
}
