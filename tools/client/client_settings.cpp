#include "client_settings.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace {

const QString ConfigOption = QStringLiteral("config");
const QString ConsoleOption = QStringLiteral("console");
const QString PortOption = QStringLiteral("port");
const QString PcOption = QStringLiteral("pc");
const QString BindOption = QStringLiteral("bind");
const QString CafeOption = QStringLiteral("cafe");
const QString PowerOption = QStringLiteral("allow-power");
const QString GapOption = QStringLiteral("message-gap");
const QString WindowedOption = QStringLiteral("windowed");
const QString StateOption = QStringLiteral("state-file");

// A whole number within bounds, or a problem told in the words of where it came from.
bool readNumber(const QString& text, int low, int high, const QString& where, int* value,
                QStringList& problems) {
    bool ok = false;
    const int v = text.trimmed().toInt(&ok);
    if (!ok || v < low || v > high) {
        problems << QStringLiteral("%1 must be a whole number from %2 to %3, not \"%4\".")
                        .arg(where)
                        .arg(low)
                        .arg(high)
                        .arg(text);
        return false;
    }
    *value = v;
    return true;
}

bool readFlag(const QString& text, bool fallback) {
    const QString t = text.trimmed().toLower();
    if (t == QLatin1String("true") || t == QLatin1String("yes") || t == QLatin1String("1") ||
        t == QLatin1String("on"))
        return true;
    if (t == QLatin1String("false") || t == QLatin1String("no") || t == QLatin1String("0") ||
        t == QLatin1String("off"))
        return false;
    return fallback;
}

void setPort(ClientSettings& s, const QString& text, const QString& where) {
    int port = 0;
    if (readNumber(text, 1, 65535, where, &port, s.problems))
        s.port = quint16(port);
}

void setPc(ClientSettings& s, const QString& text, const QString& where) {
    // The console takes a PC number as one byte and numbers its PCs from 1.
    if (!readNumber(text, 1, 254, where, &s.pc, s.problems))
        s.pc = -1; // told already; not "not set"
}

void setLocalAddress(ClientSettings& s, const QString& text, const QString& where) {
    if (!text.trimmed().isEmpty() && !s.localAddress.setAddress(text.trimmed()))
        s.problems
            << QStringLiteral("%1 must be an IP address of this PC, not \"%2\".").arg(where, text);
}

void finish(ClientSettings& s) {
    s.consoleAddress = s.consoleAddress.trimmed();
    const QString where = s.file.isEmpty()
                              ? QStringLiteral("the settings file %1").arg(ClientSettings::FileName)
                              : s.file;
    if (s.consoleAddress.isEmpty())
        s.problems << QStringLiteral("The console's address is not set (Address= under "
                                     "[Console] in %1, or --console).")
                          .arg(where);
    if (s.pc == 0)
        s.problems << QStringLiteral("This PC's number is not set (PC= under [Console] in "
                                     "%1, or --pc).")
                          .arg(where);
}

} // namespace

QString ClientSettings::defaultStateFile() {
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return runtime.isEmpty() ? QString()
                             : QDir(runtime).filePath(QStringLiteral("tarvoqrb-client.state"));
}

QStringList ClientSettings::candidateFiles() {
    const QString name = QString::fromLatin1(FileName);
    QStringList files;
    if (QCoreApplication::instance())
        files << QDir(QCoreApplication::applicationDirPath()).filePath(name);
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    if (!config.isEmpty())
        files << QDir(config).filePath(name);
    files << QStringLiteral("/etc/") + name;
    return files;
}

ClientSettings ClientSettings::fromFile(const QString& path) {
    ClientSettings s;
    if (path.isEmpty())
        return s;
    s.file = path;
    if (!QFileInfo(path).isReadable()) {
        s.problems << QStringLiteral("The settings file %1 cannot be read.").arg(path);
        return s;
    }
    QSettings ini(path, QSettings::IniFormat);
    if (ini.status() != QSettings::NoError) {
        s.problems << QStringLiteral("The settings file %1 is not a valid INI file.").arg(path);
        return s;
    }
    const auto where = [&](const QString& key) {
        return QStringLiteral("%1 in %2").arg(key, path);
    };
    s.consoleAddress = ini.value(QStringLiteral("Console/Address")).toString();
    if (ini.contains(QStringLiteral("Console/Port")))
        setPort(s, ini.value(QStringLiteral("Console/Port")).toString(), where("Port="));
    if (ini.contains(QStringLiteral("Console/PC")))
        setPc(s, ini.value(QStringLiteral("Console/PC")).toString(), where("PC="));
    setLocalAddress(s, ini.value(QStringLiteral("Console/LocalAddress")).toString(),
                    where("LocalAddress="));
    const QString cafe = ini.value(QStringLiteral("Client/CafeName")).toString().trimmed();
    if (!cafe.isEmpty())
        s.cafeName = cafe;
    s.allowPowerActions =
        readFlag(ini.value(QStringLiteral("Client/AllowPowerActions")).toString(), false);
    if (ini.contains(QStringLiteral("Client/MessageGapMs")))
        readNumber(ini.value(QStringLiteral("Client/MessageGapMs")).toString(), 0, 5000,
                   where("MessageGapMs="), &s.messageGapMs, s.problems);
    s.windowed = readFlag(ini.value(QStringLiteral("Client/Windowed")).toString(), false);
    if (ini.contains(QStringLiteral("Client/StateFile")))
        s.stateFile = ini.value(QStringLiteral("Client/StateFile")).toString().trimmed();
    return s;
}

void ClientSettings::addOptions(QCommandLineParser& parser) {
    parser.addOptions({
        {ConfigOption, QStringLiteral("Read the settings from FILE."), QStringLiteral("FILE")},
        {ConsoleOption, QStringLiteral("The console's address."), QStringLiteral("ADDRESS")},
        {PortOption, QStringLiteral("The console's port (1066)."), QStringLiteral("N")},
        {PcOption, QStringLiteral("This PC's number."), QStringLiteral("N")},
        {BindOption, QStringLiteral("Connect from this local address."), QStringLiteral("ADDRESS")},
        {CafeOption, QStringLiteral("The café's name on the lock screen."), QStringLiteral("NAME")},
        {PowerOption, QStringLiteral("Log off, restart and shut down when the console says so.")},
        {GapOption, QStringLiteral("Milliseconds between two messages (100)."),
         QStringLiteral("MS")},
        {WindowedOption, QStringLiteral("Plain windows, no full screen, no grab: for trying out.")},
        {StateOption, QStringLiteral("Keep the session in FILE for a restarted client."),
         QStringLiteral("FILE")},
    });
}

ClientSettings ClientSettings::load(const QCommandLineParser& parser) {
    QString path = parser.value(ConfigOption);
    if (path.isEmpty())
        for (const QString& candidate : candidateFiles())
            if (QFileInfo::exists(candidate)) {
                path = candidate;
                break;
            }
    ClientSettings s = fromFile(path);
    if (parser.isSet(ConsoleOption))
        s.consoleAddress = parser.value(ConsoleOption);
    if (parser.isSet(PortOption))
        setPort(s, parser.value(PortOption), QStringLiteral("--port"));
    if (parser.isSet(PcOption))
        setPc(s, parser.value(PcOption), QStringLiteral("--pc"));
    if (parser.isSet(BindOption))
        setLocalAddress(s, parser.value(BindOption), QStringLiteral("--bind"));
    if (parser.isSet(CafeOption) && !parser.value(CafeOption).trimmed().isEmpty())
        s.cafeName = parser.value(CafeOption).trimmed();
    if (parser.isSet(PowerOption))
        s.allowPowerActions = true;
    if (parser.isSet(GapOption))
        readNumber(parser.value(GapOption), 0, 5000, QStringLiteral("--message-gap"),
                   &s.messageGapMs, s.problems);
    if (parser.isSet(WindowedOption))
        s.windowed = true;
    if (parser.isSet(StateOption))
        s.stateFile = parser.value(StateOption).trimmed();
    finish(s);
    return s;
}
