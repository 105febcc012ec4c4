// Where the client finds its console and which PC it is: an INI file (named, or in the user's
// configuration folder) and the command line, which wins. Bad values are told, never guessed.
#include "client_settings.h"
#include "support/files.h"

#include <QCommandLineParser>
#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;

class ClientSettingsTest : public QObject {
    Q_OBJECT

    QTemporaryDir home;

private Q_SLOTS:
    void initTestCase() {
        // Nothing of the real user's configuration is read.
        qputenv("XDG_CONFIG_HOME", home.filePath(u"config"_s).toLocal8Bit());
        QVERIFY(QDir().mkpath(home.filePath(u"config"_s)));
    }

    void readsFileAndCommandLine_data() {
        QTest::addColumn<QByteArray>("ini");    // null: no file at all
        QTest::addColumn<bool>("inUserConfig"); // where the file is: else named with --config
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("read");         // address|port|pc|power|gap
        QTest::addColumn<QStringList>("problems"); // with FILE for the file's path
        const QByteArray good = "[Console]\nAddress=192.168.1.10\nPC=7\n";
        const auto row = [](const char* name, const QByteArray& ini, bool user,
                            const QStringList& arguments, const char* read,
                            const QStringList& problems = {}) {
            QTest::newRow(name) << ini << user << arguments << read << problems;
        };
        row("file", good, false, {}, "192.168.1.10|1066|7|no|100");
        row("user's configuration folder", good, true, {}, "192.168.1.10|1066|7|no|100");
        row("everything in the file",
            "[Console]\nAddress=cafe-counter\nPort=2000\nPC=12\n[Client]\nCafeName=Kape\n"
            "AllowPowerActions=yes\nMessageGapMs=250\n",
            false, {}, "cafe-counter|2000|12|yes|250");
        row("command line wins", good, false,
            {"--console", "10.0.0.2", "--port", "1067", "--pc", "9", "--allow-power"},
            "10.0.0.2|1067|9|yes|100");
        row("command line alone", {}, false, {"--console", "10.0.0.2", "--pc", "3"},
            "10.0.0.2|1066|3|no|100");
        row("nothing anywhere", {}, false, {}, "|1066|0|no|100",
            {"The console's address is not set (Address= under [Console] in the settings file "
             "tarvoqrb-client.ini, or --console).",
             "This PC's number is not set (PC= under [Console] in the settings file "
             "tarvoqrb-client.ini, or --pc)."});
        row("named file missing", {}, false,
            {"--config", "/nonexistent/client.ini", "--pc", "4", "--console", "a"},
            "a|1066|4|no|100", {"The settings file /nonexistent/client.ini cannot be read."});
        row("PC beyond a byte", "[Console]\nAddress=a\nPC=300\n", false, {}, "a|1066|-1|no|100",
            {"PC= in FILE must be a whole number from 1 to 254, not \"300\"."});
        row("PC zero on the command line", good, false, {"--pc", "0"},
            "192.168.1.10|1066|-1|no|100",
            {"--pc must be a whole number from 1 to 254, not \"0\"."});
        row("port in words", good + "Port=ten sixty-six\n", false, {}, "192.168.1.10|1066|7|no|100",
            {"Port= in FILE must be a whole number from 1 to 65535, not \"ten sixty-six\"."});
        row("not an address to bind", good + "LocalAddress=here\n", false, {},
            "192.168.1.10|1066|7|no|100",
            {"LocalAddress= in FILE must be an IP address of this PC, not \"here\"."});
        row("power left at its default by a word it does not know",
            good + "[Client]\nAllowPowerActions=maybe\n", false, {}, "192.168.1.10|1066|7|no|100");
    }
    void readsFileAndCommandLine() {
        QFETCH(QByteArray, ini);
        QFETCH(bool, inUserConfig);
        QFETCH(QStringList, arguments);
        QFETCH(QString, read);
        QFETCH(QStringList, problems);
        const QString userFile =
            QDir(home.filePath(u"config"_s)).filePath(u"tarvoqrb-client.ini"_s);
        QTemporaryDir dir;
        const QString path = inUserConfig ? userFile : dir.filePath(u"client.ini"_s);
        QStringList args{u"tarvoqrb-client"_s};
        if (!ini.isNull()) {
            QVERIFY(writeFile(path, ini));
            if (!inUserConfig)
                args << u"--config"_s << path;
        }
        QCommandLineParser parser;
        ClientSettings::addOptions(parser);
        QVERIFY(parser.parse(args + arguments));
        const ClientSettings s = ClientSettings::load(parser);
        QFile::remove(userFile);
        QCOMPARE(
            QStringList({s.consoleAddress, QString::number(s.port), QString::number(s.pc),
                         s.allowPowerActions ? u"yes"_s : u"no"_s, QString::number(s.messageGapMs)})
                .join(u'|'),
            read);
        QCOMPARE(s.problems, problems.replaceInStrings(u"FILE"_s, path));
        if (!ini.isNull())
            QCOMPARE(s.file, path);
    }
};

QTEST_GUILESS_MAIN(ClientSettingsTest)
#include "tst_client_settings.moc"
