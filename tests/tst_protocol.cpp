#include "protocol/protocol.h"
#include "protocol/splitter.h"
#include "support/files.h"

#include <QRandomGenerator>
#include <QtTest>

#include <variant>
#include <vector>

using L = QByteArrayList;
using Protocol::ConsoleWord;
using Protocol::TerminalWord;

namespace {

// A message as its builder makes it, and the exact bytes the other side expects.
struct Sample {
    const char* name;
    std::variant<ConsoleWord, TerminalWord> word;
    QByteArray built;
    QByteArray expected;
};

const std::vector<Sample>& catalogue() {
    using C = ConsoleWord;
    using T = TerminalWord;
    static const std::vector<Sample> samples = {
        {"accept", C::Accept, Msg::accept(), "ACPT"},
        {"start meter", C::StartMeter, Msg::startMeter("13:05:59"), "SMTR 13:05:59"},
        {"pause", C::Pause, Msg::pause(5000), "PAUS 5000"},
        {"pause with nothing banked", C::Pause, Msg::pause(0), "PAUS 0"},
        {"paused state", C::PausedState, Msg::pausedState(), "PAUS"},
        {"resume", C::Resume, Msg::resume("07:00:01"), "PAUX 07:00:01"},
        {"banked time", C::BankedTime, Msg::bankedTime(987654), "SBTK @987654"},
        {"banked time below zero", C::BankedTime, Msg::bankedTime(-42), "SBTK @-42"},
        {"time limit", C::TimeLimit, Msg::timeLimit("90"), "TLMT 90"},
        {"no time limit", C::TimeLimit, Msg::timeLimit("U"), "TLMT U"},
        {"warn", C::Warn, Msg::warn("5 minutes left"), "WARN 5 minutes left"},
        {"unlock", C::Unlock, Msg::unlock(), "FREE Dummy Text"},
        {"lock", C::Lock, Msg::lock(), "XFRE Dummy Text"},
        {"close meter", C::CloseMeter, Msg::closeMeter(), "CMTR"},
        {"idle", C::Idle, Msg::idle(), "OFPS"},
        {"log off", C::LogOff, Msg::logOff(), "LGOF"},
        {"restart", C::Restart, Msg::restart(), "RSTR"},
        {"shut down", C::ShutDown, Msg::shutDown(), "PTAY"},
        {"text", C::Text, Msg::text("Bye now"), "TEXT Bye now"},
        {"request processes", C::RequestProcesses, Msg::requestProcesses(), "RQPR"},
        {"kill process", C::KillProcess, Msg::killProcess("game.exe"), "KLPR game.exe"},
        {"request snapshot", C::RequestSnapshot, Msg::requestSnapshot(), "SNPS"},
        {"rates", C::Rates, Msg::rates(120, 45, 7.25), "SRPH 120.:45.;7.25"},
        {"rates below one", C::Rates, Msg::rates(12.5, 1, 0.75), "SRPH 12.5:1.;.75"},
        {"text received", C::TextReceived, Msg::textReceived(), "MSGR"},
        {"invalid member", C::InvalidMember, Msg::invalidMember(), "INVD"},
        {"log successful", C::LogSuccessful, Msg::logSuccessful(), "Log Successful"},
        {"failed log", C::FailedLog, Msg::failedLog(), "Failed Log"},
        {"form logger loaded", C::FormLoggerLoaded, Msg::formLoggerLoaded(), "Form logger loaded"},
        {"products", C::Products, Msg::products("Coke @ 15.00;Chips @ 8.50;End"),
         "RAVP Coke @ 15.00;Chips @ 8.50;End"},
        {"no products", C::Products, Msg::products("End"), "RAVP End"},

        {"identify", T::Identify, Msg::identify(7), "AIP7"},
        {"identify two digits", T::Identify, Msg::identify(12), "AIP12"},
        {"log-on dialog", T::LogOnDialog, Msg::requestLogOnDialog(), "Loa"},
        {"log in", T::LogIn, Msg::logIn("ID-00001:DELA CRUZ, JUAN;1"),
         "LOG ID-00001:DELA CRUZ, JUAN;1"},
        {"check member", T::CheckMember, Msg::checkMember("M-7:REYES, ANA;3"),
         "CHK M-7:REYES, ANA;3"},
        {"rates request", T::Rates, Msg::requestRates(), "RTS"},
        {"text to console", T::Text, Msg::textToConsole("hello"), "TXT hello"},
        {"products request", T::Products, Msg::requestProducts(), "PLS"},
        {"alert", T::Alert, Msg::alert("Printer jam"), "EMT Printer jam"},
        {"process list", T::Processes, Msg::processList({"a", "b"}), "APL a;b;"},
        {"no processes", T::Processes, Msg::processList({}), "APL "},
        {"snapshot's first piece", T::Snapshot,
         Protocol::message(T::Snapshot, QByteArray("\x10\x00\x00", 3)),
         QByteArray("BM6\x10\x00\x00", 6)},
    };
    return samples;
}

// What the splitter cuts out of `reads` arriving in turn, and what it leaves waiting.
L split(const L& reads, QByteArray& pending) {
    L got;
    for (const QByteArray& r : reads) {
        pending += r;
        got += Protocol::splitConsoleMessages(pending);
    }
    return got;
}

} // namespace

class ProtocolTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Each word is built to the exact bytes that the other side reads back as that word and,
    // from the console, the argument behind its prefix. A terminal word is the first three
    // characters compared exactly; a console word that takes nothing must be the whole message.
    void buildsAndReadsBack_data() {
        QTest::addColumn<QByteArray>("built"); // null for what no builder makes
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<bool>("fromConsole");
        QTest::addColumn<int>("word"); // -1 for none
        for (const Sample& s : catalogue()) {
            const auto* c = std::get_if<ConsoleWord>(&s.word);
            QTest::newRow(s.name) << s.built << s.expected << bool(c)
                                  << (c ? int(*c) : int(std::get<TerminalWord>(s.word)));
        }
        const auto terminal = [](const char* name, const QByteArray& message, int word) {
            QTest::newRow(name) << QByteArray() << message << false << word;
        };
        terminal("word alone", "AIP", int(TerminalWord::Identify));
        terminal("word run on", "RTSRTS", int(TerminalWord::Rates));
        terminal("no separator", "TXThello", int(TerminalWord::Text));
        // Wrong case, a blank first, the word later on, too short, a console word: none.
        for (const char* m : {"log ID-1:A;1", "aip7", "LOA", " RTS", "xLOG ID-1:A;1", "LO", "ACPT", ""})
            terminal(*m ? m : "empty", m, -1);
        terminal("bitmap of another size", QByteArray("BM5\x10\x00", 5), -1);
        for (const char* m : {"PAUSX", "CMTR ", "log successful", " ACPT", "RTS", ""})
            QTest::newRow(QByteArray("from the console: ").append(m).constData())
                << QByteArray() << QByteArray(m) << true << -1;
    }
    void buildsAndReadsBack() {
        QFETCH(QByteArray, built);
        QFETCH(QByteArray, message);
        QFETCH(bool, fromConsole);
        QFETCH(int, word);
        if (!built.isNull())
            QCOMPARE(built, message);
        const auto asInt = [](const auto& got) { return got ? int(*got) : -1; };
        if (!fromConsole) {
            QCOMPARE(asInt(Protocol::classify(message)), word);
            return;
        }
        const auto got = Protocol::classifyConsole(message);
        QCOMPARE(asInt(got), word);
        if (got)
            QCOMPARE(Protocol::argumentOf(*got, message),
                     message.mid(Protocol::info(*got).prefix.size()));
    }

    // A word added to the table is built and split like all the others.
    void everyWordIsInTheCatalogue() {
        QStringList missing;
        auto has = [](auto word) {
            return std::any_of(catalogue().begin(), catalogue().end(),
                               [&](const Sample& s) { return s.word == decltype(s.word)(word); });
        };
        for (const auto& w : Protocol::consoleWords())
            if (!has(w.word))
                missing << QString::fromLatin1(w.prefix);
        for (const auto& w : Protocol::terminalWords())
            if (!has(w.word))
                missing << QString::fromLatin1(w.prefix);
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(QLatin1Char('|'))));
    }

    // The rates as the console writes them read back as the same values, to the cent.
    void readsTheRatesItWasSent_data() {
        QTest::addColumn<QString>("payload");
        QTest::addColumn<QList<double>>("values"); // rate, minutes, minimum amount; none if bad
        const auto sent = [](const char* name, double rate, int minutes, double minimum) {
            row(name, QString::fromUtf8(Msg::rates(rate, minutes, minimum).mid(5)),
                QList<double>{rate, double(minutes), minimum});
        };
        sent("defaults", 20, 30, 10);
        sent("fractions", 25.5, 30, 12.75);
        sent("below one", 12.5, 1, 0.75);
        sent("zero minimum", 30, 0, 0);
        sent("large rate", 999.99, 120, 100);
        for (const char* bad : {"20.:30.", ":30.;10.", "twenty:30.;10.", "20.5.1:30.;10.",
                                "-20.:30.;10.", ""})
            row(*bad ? bad : "empty", QString::fromLatin1(bad), QList<double>{});
    }
    void readsTheRatesItWasSent() {
        QFETCH(QString, payload);
        QFETCH(QList<double>, values);
        const auto r = Protocol::RatesPayload::parse(payload);
        QCOMPARE(r ? (QList<double>{r->ratePerHour, r->minimumMinutes, r->minimumAmount})
                   : QList<double>(),
                 values);
    }

    void readsTheProductList_data() {
        QTest::addColumn<QString>("payload");
        QTest::addColumn<QStringList>("items");
        row("two", QString("Coke @ 15.00;Chips @ 8.50;End"), QStringList{"Coke @ 15.00", "Chips @ 8.50"});
        row("none", QString("End"), QStringList{});
        row("blank lines of the file", QString("Coke @ 15.00; ;;End"), QStringList{"Coke @ 15.00"});
        row("product named End-something", QString("Endive @ 2.00;End"), QStringList{"Endive @ 2.00"});
    }
    void readsTheProductList() {
        QFETCH(QString, payload);
        QFETCH(QStringList, items);
        QCOMPARE(Protocol::productItems(payload), items);
    }

    // id ":" name ";" PC number: the first ":" ends the id, the first ";" the name.
    void readsTheLogInPayload_data() {
        QTest::addColumn<QString>("payload");
        QTest::addColumn<QStringList>("parts"); // id, name, PC number; none if refused
        const auto row = [](const char* name, const QString& payload, const QStringList& parts) {
            QTest::newRow(name) << payload << parts;
        };
        row("member", "ID-00001:DELA CRUZ, JUAN;1", {"ID-00001", "DELA CRUZ, JUAN", "1"});
        row("colon in the name", "A:B:C;3", {"A", "B:C", "3"});
        row("semicolon after the PC", "A:B;3;4", {"A", "B", "3;4"});
        row("all empty", ":;", {"", "", ""});
        row("no colon", "ID-1 DELA CRUZ;1", {});
        row("no semicolon", "ID-1:DELA CRUZ 1", {});
        row("semicolon before colon", "ID-1;DELA:CRUZ", {});
        row("empty", "", {});
    }
    void readsTheLogInPayload() {
        QFETCH(QString, payload);
        QFETCH(QStringList, parts);
        const auto p = Protocol::LogInPayload::parse(payload);
        QCOMPARE(p ? (QStringList{p->id, p->name, p->pcText}) : QStringList(), parts);
        if (p)
            QCOMPARE(p->text(), payload);
    }

    // The console adds no terminator, so messages written back to back arrive joined.
    void splitsWhatArrives_data() {
        QTest::addColumn<L>("reads");
        QTest::addColumn<L>("expected");
        QTest::addColumn<QByteArray>("left");
        const auto row = [](const char* name, const L& reads, const L& expected,
                            const QByteArray& left = {}) {
            QTest::newRow(name) << reads << expected << left;
        };
        row("close pair", {"CMTROFPS"}, {"CMTR", "OFPS"});
        // A product list runs to ";End", whatever its items say.
        row("product named End-something", {"RAVP Endive @ 2.00;EndCMTR"},
            {"RAVP Endive @ 2.00;End", "CMTR"});
        row("list across reads", {"RAVP None @ 0", ".00;", "En", "dACPT"},
            {"RAVP None @ 0.00;End", "ACPT"});
        row("list not finished yet", {"MSGRRAVP a;b;"}, {"MSGR"}, "RAVP a;b;");
        // Free text runs to the next command word that begins a message.
        row("free text up to the next word", {"TEXT hello thereCMTROFPS"},
            {"TEXT hello there", "CMTR", "OFPS"});
        row("command word inside free text", {"TEXT please PAUSE the game nowCMTR"},
            {"TEXT please PAUSE the game now", "CMTR"});
        row("time across reads", {"SM", "TR 09:0", "0:00CMTR"}, {"SMTR 09:00:00", "CMTR"});
        row("word cut at the end waits", {"ACPTOF"}, {"ACPT"}, "OF");
        const QByteArray junk("\x00\x01zz", 4);
        row("garbage before a word", {junk + "ACPT"}, {junk, "ACPT"});
        row("garbage keeps a cut word", {"xyzAC", "PT"}, {"xyzAC"}, "PT");
        row("started word that turns to garbage", {"AC", "XY"}, {"ACXY"});
    }
    void splitsWhatArrives() {
        QFETCH(L, reads);
        QFETCH(L, expected);
        QFETCH(QByteArray, left);
        QByteArray pending;
        QCOMPARE(split(reads, pending), expected);
        QCOMPARE(pending, left);
    }

    void everyConsoleMessageSurvivesBeingJoined() {
        L messages;
        for (const Sample& s : catalogue())
            if (std::holds_alternative<ConsoleWord>(s.word))
                messages << s.expected;
        for (const QByteArray& first : messages)
            for (const QByteArray& second : messages) {
                QByteArray pending;
                QCOMPARE(split({first + second}, pending), (L{first, second}));
                QCOMPARE(pending, QByteArray());
            }
    }

    // Cut at random places, the messages put back together are the stream exactly,
    // with only an unfinished tail left waiting.
    void nothingIsLostOrInvented() {
        const L parts = QByteArray("ACPT|SMTR 09:00:00|PAUS|PAUS 12|SBTK @7|RAVP a;b;End|RAVP End|"
                                   "TEXT hi|CMTR|En|SM|RAVP|@|;|\x01\xff")
                            .split('|');
        for (quint32 seed : {1u, 2u, 3u, 42u, 1066u}) {
            QRandomGenerator random(seed);
            QByteArray stream;
            for (int i = 0; i < 400; ++i)
                stream += parts[random.bounded(int(parts.size()))];
            L reads;
            for (qsizetype at = 0; at < stream.size(); at += reads.last().size())
                reads << stream.mid(at, 1 + random.bounded(40));
            QByteArray pending;
            const L got = split(reads, pending);
            QVERIFY(!got.contains(QByteArray()));
            QCOMPARE(got.join() + pending, stream);
        }
    }
};

QTEST_GUILESS_MAIN(ProtocolTest)
#include "tst_protocol.moc"
