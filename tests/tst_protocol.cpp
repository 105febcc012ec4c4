#include "protocol/protocol.h"
#include "protocol/splitter.h"

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

L consoleMessages() {
    L messages;
    for (const Sample& s : catalogue())
        if (std::holds_alternative<ConsoleWord>(s.word))
            messages << s.expected;
    return messages;
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
    void buildsTheExactBytes_data() {
        QTest::addColumn<QByteArray>("built");
        QTest::addColumn<QByteArray>("expected");
        for (const Sample& s : catalogue())
            QTest::newRow(s.name) << s.built << s.expected;
    }
    void buildsTheExactBytes() {
        QFETCH(QByteArray, built);
        QFETCH(QByteArray, expected);
        QCOMPARE(built, expected);
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

    // The first three characters decide, compared exactly; anything else is none.
    void classifiesByTheFirstThreeCharacters_data() {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QByteArray>("word"); // empty for none
        const auto row = [](const char* name, const QByteArray& message, const QByteArray& word) {
            QTest::newRow(name) << message << word;
        };
        for (const Sample& s : catalogue())
            if (const auto* word = std::get_if<TerminalWord>(&s.word))
                row(s.name, s.expected, Protocol::info(*word).text.toByteArray());
        row("word alone", "AIP", "AIP");
        row("word run on", "RTSRTS", "RTS");
        row("no separator", "TXThello", "TXT");
        row("log in lower case", "log ID-1:A;1", "");
        row("identify in lower case", "aip7", "");
        row("log-on dialog in capitals", "LOA", "");
        row("blank first", " RTS", "");
        row("word not at the start", "xLOG ID-1:A;1", "");
        row("shorter than a word", "LO", "");
        row("empty", "", "");
        row("bitmap of another size", QByteArray("BM5\x10\x00", 5), "");
        row("console word", "ACPT", "");
    }
    void classifiesByTheFirstThreeCharacters() {
        QFETCH(QByteArray, message);
        QFETCH(QByteArray, word);
        const auto got = Protocol::classify(message);
        QCOMPARE(got ? Protocol::info(*got).text.toByteArray() : QByteArray(), word);
    }

    // What a terminal makes of each console message: its word, and the argument behind
    // the word's prefix. A word that takes nothing must be the whole message.
    void classifiesWhatTheConsoleSends_data() {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<int>("word"); // -1 for none
        QTest::addColumn<QByteArray>("argument");
        for (const Sample& s : catalogue())
            if (const auto* word = std::get_if<ConsoleWord>(&s.word))
                QTest::newRow(s.name) << s.expected << int(*word)
                                      << s.expected.mid(Protocol::info(*word).prefix.size());
        const auto none = [](const char* name, const QByteArray& message) {
            QTest::newRow(name) << message << -1 << QByteArray();
        };
        none("paused state run on", "PAUSX");
        none("bare word with a blank", "CMTR ");
        none("reply in lower case", "log successful");
        none("word not at the start", " ACPT");
        none("terminal word", "RTS");
        none("empty", "");
    }
    void classifiesWhatTheConsoleSends() {
        QFETCH(QByteArray, message);
        QFETCH(int, word);
        QFETCH(QByteArray, argument);
        const auto got = Protocol::classifyConsole(message);
        QCOMPARE(got ? int(*got) : -1, word);
        if (got)
            QCOMPARE(Protocol::argumentOf(*got, message), argument);
    }

    // The rates as the console writes them read back as the same values, to the cent.
    void readsTheRatesItWasSent_data() {
        QTest::addColumn<QString>("payload");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<QList<double>>("values"); // rate, minutes, minimum amount
        const auto sent = [](const char* name, double rate, int minutes, double minimum) {
            QTest::newRow(name) << QString::fromUtf8(Msg::rates(rate, minutes, minimum).mid(5))
                                << true << QList<double>{rate, double(minutes), minimum};
        };
        sent("defaults", 20, 30, 10);
        sent("fractions", 25.5, 30, 12.75);
        sent("below one", 12.5, 1, 0.75);
        sent("zero minimum", 30, 0, 0);
        sent("large rate", 999.99, 120, 100);
        const auto bad = [](const char* name, const QString& payload) {
            QTest::newRow(name) << payload << false << QList<double>{};
        };
        bad("no minimum", "20.:30.");
        bad("empty rate", ":30.;10.");
        bad("words", "twenty:30.;10.");
        bad("two points", "20.5.1:30.;10.");
        bad("negative", "-20.:30.;10.");
        bad("empty", "");
    }
    void readsTheRatesItWasSent() {
        QFETCH(QString, payload);
        QFETCH(bool, valid);
        QFETCH(QList<double>, values);
        const auto rates = Protocol::RatesPayload::parse(payload);
        QCOMPARE(rates.has_value(), valid);
        if (valid)
            QCOMPARE(
                (QList<double>{rates->ratePerHour, rates->minimumMinutes, rates->minimumAmount}),
                values);
    }

    void readsTheProductList_data() {
        QTest::addColumn<QString>("payload");
        QTest::addColumn<QStringList>("items");
        QTest::newRow("two") << "Coke @ 15.00;Chips @ 8.50;End"
                             << QStringList{"Coke @ 15.00", "Chips @ 8.50"};
        QTest::newRow("none") << "End" << QStringList{};
        QTest::newRow("blank lines of the file")
            << "Coke @ 15.00; ;;End" << QStringList{"Coke @ 15.00"};
        QTest::newRow("product named End-something")
            << "Endive @ 2.00;End" << QStringList{"Endive @ 2.00"};
    }
    void readsTheProductList() {
        QFETCH(QString, payload);
        QFETCH(QStringList, items);
        QCOMPARE(Protocol::productItems(payload), items);
    }

    // id ":" name ";" PC number: the first ":" ends the id, the first ";" the name.
    void readsTheLogInPayload_data() {
        QTest::addColumn<QString>("payload");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<QStringList>("parts"); // id, name, PC number
        const auto row = [](const char* name, const QString& payload, const QStringList& parts) {
            QTest::newRow(name) << payload << !parts.isEmpty() << parts;
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
        QFETCH(bool, valid);
        QFETCH(QStringList, parts);
        const auto parsed = Protocol::LogInPayload::parse(payload);
        QCOMPARE(parsed.has_value(), valid);
        if (!valid)
            return;
        QCOMPARE((QStringList{parsed->id, parsed->name, parsed->pcText}), parts);
        QCOMPARE(parsed->text(), payload);
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
        const L messages = consoleMessages();
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
