#pragma once

#include <QFile>
#include <QProcess>
#include <QString>
#include <QTest>

#include <optional>

// A whole file's bytes; empty when it cannot be read.
inline QByteArray readFile(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

inline bool writeFile(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

// Runs SQL in another program, the sqlite3 tool, which gives up at once on a locked file:
// its output, or nothing when it failed.
inline std::optional<QString> sqliteTool(const QString& path, const QString& sql) {
    QProcess p;
    p.start(QStringLiteral("sqlite3"), {QStringLiteral("-bail"), path, sql});
    if (!p.waitForFinished() || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        return std::nullopt;
    return QString::fromUtf8(p.readAllStandardOutput()).trimmed();
}

// One table row a line; arguments decay so that string literals land in QString columns.
template <typename... T> void row(const char* name, T... values) {
    (QTest::newRow(name) << ... << values);
}
