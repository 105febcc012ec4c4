#include "store/settings_file.h"

#include "base/text.h"

#include <QFile>
#include <QSaveFile>
#include <QTextStream>

#include <cmath>

namespace {

#ifdef Q_OS_WIN
constexpr QByteArrayView NativeEnd = "\r\n";
#else
constexpr QByteArrayView NativeEnd = "\n";
#endif

[[noreturn]] void fail(const char* what, const QString& path, const QString& why) {
    throw SettingsError(QStringLiteral("The settings file %1 cannot be %2: %3")
                            .arg(path, QString::fromLatin1(what), why)
                            .toStdString());
}

// The file's lines, each with its own ending ("\n", "\r\n", or none on a last line), so
// that joining them gives back the file byte for byte.
QList<QByteArray> splitLines(const QByteArray& bytes) {
    QList<QByteArray> lines;
    qsizetype from = 0;
    while (from < bytes.size()) {
        const qsizetype end = bytes.indexOf('\n', from);
        const qsizetype next = end < 0 ? bytes.size() : end + 1;
        lines.append(bytes.mid(from, next - from));
        from = next;
    }
    return lines;
}

QByteArrayView ending(QByteArrayView line) {
    if (line.endsWith("\r\n"))
        return line.last(2);
    return line.endsWith('\n') ? line.last(1) : QByteArrayView();
}

QByteArrayView body(QByteArrayView line) {
    return line.chopped(ending(line).size());
}

// The line a key is read from: the last that ends with "=" + key after some value.
qsizetype lineOfKey(const QList<QByteArray>& lines, const QByteArray& suffix) {
    for (qsizetype i = lines.size() - 1; i >= 0; --i) {
        const QByteArrayView b = body(lines[i]);
        if (b.size() > suffix.size() && b.endsWith(suffix))
            return i;
    }
    return -1;
}

QByteArray suffixOf(const QString& key) {
    Q_ASSERT(!key.isEmpty() && !key.contains(QLatin1Char('=')));
    return '=' + key.toUtf8();
}

// The whole file, or a null array when there is none.
QByteArray readFile(const QString& path) {
    QFile file(path);
    if (!file.exists())
        return QByteArray();
    if (!file.open(QIODevice::ReadOnly))
        fail("read", path, file.errorString());
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        fail("read", path, file.errorString());
    if (bytes.isNull())
        bytes = QByteArray(""); // an empty file, not a missing one
    return bytes;
}

} // namespace

int SettingsFile::loadNofpc(const AppFolder& folder) {
    const QString path = folder.file(QString::fromLatin1(FileName));
    QFile file(path);
    if (!file.exists()) {
        if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
            throw SettingsError(QStringLiteral("The settings file %1 cannot be created: %2")
                                    .arg(path, file.errorString())
                                    .toStdString());
        const QByteArray lines = "24=NOFPC\n1=PAGE\nPlease don't Modify....\n";
        if (file.write(lines) != lines.size() || !file.flush())
            throw SettingsError(QStringLiteral("The settings file %1 cannot be written: %2")
                                    .arg(path, file.errorString())
                                    .toStdString());
        file.close();
    }
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        throw SettingsError(QStringLiteral("The settings file %1 cannot be read: %2")
                                .arg(path, file.errorString())
                                .toStdString());

    double value = DefaultTerminals;
    QTextStream in(&file);
    while (!in.atEnd()) {
        const QString line = in.readLine();
        // The key must stand after at least one character: the value comes first.
        const qsizetype at = line.indexOf(QLatin1String("=NOFPC"));
        if (at >= 1)
            value = leadingNumber(line.left(at));
    }
    const double rounded = std::nearbyint(value);
    if (rounded < 0 || rounded > MostTerminals)
        throw SettingsError(QStringLiteral("%1 sets %2 terminals (=NOFPC); the console serves "
                                           "0 to %3. Correct the file and start again.")
                                .arg(path, QString::number(value))
                                .arg(MostTerminals)
                                .toStdString());
    return int(rounded);
}

std::optional<QString> SettingsFile::readValue(const AppFolder& folder, const QString& key) {
    const QList<QByteArray> lines =
        splitLines(readFile(folder.file(QString::fromLatin1(FileName))));
    const QByteArray suffix = suffixOf(key);
    const qsizetype at = lineOfKey(lines, suffix);
    if (at < 0)
        return std::nullopt;
    return QString::fromUtf8(body(lines[at]).chopped(suffix.size()));
}

void SettingsFile::writeValues(const AppFolder& folder,
                               const QList<std::pair<QString, QString>>& settings) {
    const QString path = folder.file(QString::fromLatin1(FileName));
    for (const auto& [key, value] : settings)
        if (value.contains(QLatin1Char('\n')) || value.contains(QLatin1Char('\r')))
            throw SettingsError(
                QStringLiteral("The setting %1 cannot be \"%2\": a setting is one line of text.")
                    .arg(key, value)
                    .toStdString());

    QByteArray bytes = readFile(path);
    if (bytes.isNull())
        bytes = "24=NOFPC" + NativeEnd.toByteArray() + "1=PAGE" + NativeEnd.toByteArray() +
                "Please don't Modify...." + NativeEnd.toByteArray();
    QList<QByteArray> lines = splitLines(bytes);
    // New lines end the way the file's lines already do.
    const QByteArray end =
        (!lines.isEmpty() && !ending(lines.first()).isEmpty() ? ending(lines.first()) : NativeEnd)
            .toByteArray();
    for (const auto& [key, value] : settings) {
        const QByteArray suffix = suffixOf(key);
        const QByteArray line = value.toUtf8() + suffix;
        if (value.isEmpty()) {
            for (qsizetype at; (at = lineOfKey(lines, suffix)) >= 0;)
                lines.removeAt(at);
            continue;
        }
        const qsizetype at = lineOfKey(lines, suffix);
        if (at >= 0) {
            lines[at] = line + ending(lines[at]).toByteArray();
            continue;
        }
        if (!lines.isEmpty() && ending(lines.last()).isEmpty())
            lines.last() += end;
        lines.append(line + end);
    }

    const QByteArray content = lines.join();
    QSaveFile out(path);
    // Unbuffered, so that a full disk fails the write itself: a write that fails only in
    // commit()'s flush still replaced the file with an empty one (seen with Qt 6.4).
    if (!out.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        fail("written", path, out.errorString());
    if (out.write(content) != content.size()) {
        const QString why = out.errorString();
        out.cancelWriting();
        fail("written", path, why);
    }
    if (!out.commit())
        fail("written", path, out.errorString());
}
