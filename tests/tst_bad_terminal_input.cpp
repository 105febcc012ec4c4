// Every word a terminal may send, as a broken or hostile terminal program sends it: cut
// short, padded far beyond any real message, with NUL, 0xFF and control bytes inside, or
// nothing but bytes after the word. Each goes over a real connection to a console that
// holds a running session and saved rows. The console must go on serving the other
// terminals, the session and the rows must stay as they were (only a log-in may start a
// session, on the sender's own PC), and no database error may reach the operator.
#include "protocol/protocol.h"
#include "support/console_fixture.h"
#include "support/files.h"

#include <QtTest>

#include <map>
#include <set>

using L = QByteArrayList;
using Protocol::Shape;
using Protocol::TerminalWord;
using namespace Qt::StringLiterals;

namespace {
constexpr int Sender = 9, Holder = 3, Bystander = 12;
constexpr qsizetype Oversize = 300 * 1024; // far more than one read of the socket brings

// A well-formed message of each word, as the terminal of PC 9 sends it.
QByteArray sample(TerminalWord word, Shape shape) {
    static const std::map<Shape, QByteArray> arguments = {
        {Shape::LogIn, "W-9:EVE;9"},
        {Shape::Number, "9"},
        {Shape::Text, "the printer is out of paper"},
        {Shape::Items, "explorer.exe;game.exe;"},
        {Shape::Binary, QByteArray("\x0e\0\0\0\0\0\x36\0\0\0pixels Close", 22)}};
    if (word == TerminalWord::CheckMember) // a member of the register, so that it is looked up
        return Protocol::message(word, "ID-00001:DELA CRUZ, JUAN;9");
    return Protocol::message(word, arguments.contains(shape) ? arguments.at(shape) : "");
}

// The message with `bytes` put in at `at`.
QByteArray inserted(QByteArray m, qsizetype at, const QByteArray& bytes) {
    return m.insert(std::min(at, m.size()), bytes);
}
} // namespace

class BadTerminalInputTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;
    std::unique_ptr<TerminalClient> holder, bystander;
    std::unique_ptr<QTcpSocket> sender; // a program that only says what it is told to

    // What must not change: the holder's session, the rows of every PC but the sender's,
    // the revenue and the register.
    QString kept() {
        const TerminalRecord& r = fx->record(Holder);
        return u"%1 %2 %3 %4 %5 %6|"_s.arg(r.stateCode(), r.cid, r.startTime)
                   .arg(r.startTick)
                   .arg(r.bankedMs)
                   .arg(r.timeLimit) +
               fx->scalar(u"SELECT (SELECT group_concat(aindex || CID || StartTime || isout || "
                          "BkTick || pcstat, ' ') FROM templog WHERE aindex <> ?) || '|' || "
                          "(SELECT count(*) || ' ' || sum(Amount) FROM TmpRvnD) || '|' || "
                          "(SELECT group_concat(CID || LN || FN) FROM members)"_s,
                          {Sender})
                   .toString();
    }

private Q_SLOTS:
    void everyWordMangled_data() {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<bool>("mayLogIn");
        QTest::addColumn<bool>("heard"); // its text must reach the operator or the log
        QList<std::pair<QString, QByteArray>> samples;
        for (const auto& w : Protocol::terminalWords())
            samples.append({QString::fromLatin1(w.text), sample(w.word, w.shape)});
        samples.append({u"no word"_s, QByteArray("ZZZ \xff\xfe piece Close")});
        const QList<std::pair<const char*, QByteArray>> inside = {
            {"NUL", QByteArray(1, '\0')}, {"0xFF", "\xff"}, {"controls", "\x01\x1b\x7f\r\n\t\b"}};
        for (const auto& sampled : samples) {
            const QString& word = sampled.first;
            const QByteArray& m = sampled.second;
            const bool mayLogIn = word == u"LOG"_s || word == u"CHK"_s;
            auto add = [&](const QString& how, const QByteArray& bytes) {
                const bool heard = (word == u"TXT"_s || word == u"EMT"_s) &&
                                   bytes.startsWith(word.toLatin1()) && bytes.contains("paper");
                QTest::newRow(qPrintable(word + u' ' + how)) << bytes << mayLogIn << heard;
            };
            for (qsizetype cut : std::set<qsizetype>{1, 2, 3, 4, m.size() / 2, m.size() - 1})
                if (cut < m.size())
                    add(u"cut to %1"_s.arg(cut), m.left(cut));
            add(u"padded"_s, m + QByteArray(Oversize, m.back()));
            for (const auto& [name, bytes] : inside) {
                add(QLatin1String(name) + u" after the word"_s, inserted(m, 3, bytes));
                add(QLatin1String(name) + u" in the middle"_s,
                    inserted(m, 3 + (m.size() - 3) / 2, bytes));
            }
            QByteArray noise = m.left(4);
            for (int i = 0; i < 4096; ++i)
                noise += char((i * 37 + 11) & 0xff);
            add(u"bytes after the word"_s, noise);
        }
    }

    void init() {
        fx = std::make_unique<ConsoleFixture>();
        fx->start("24=NOFPC\n");
        fx->exec(u"INSERT INTO members (CID, LN, FN) VALUES ('ID-00001', 'DELA CRUZ', 'JUAN')"_s);
        fx->exec(u"INSERT INTO TmpRvnD (Rdate, Amount, rtype, TID) VALUES (?, 120.5, ?, '3')"_s,
                 {QDate(2026, 11, 14), u"GAMES_RENTALS"_s});
        TerminalProbe& probe = fx->probe();
        holder = probe.online(Holder);
        bystander = probe.online(Bystander);
        sender = probe.silent(u"127.0.0.9"_s);
        QVERIFY(holder && bystander && sender);
        sender->write("AIP9");
        QTRY_VERIFY(fx->record(Sender).online);
        QVERIFY(probe.logIn(*holder, Holder, u"W-3:ANA"_s));
        fx->clock.advance(60000);
        // The sender was asked for its screen, so that its pieces reach the snapshot file.
        QVERIFY(fx->console->snapshots().request(Sender));
        fx->prompts.clear();
    }
    void cleanup() {
        holder.reset();
        sender.reset();
        bystander.reset();
        fx.reset();
    }

    void everyWordMangled() {
        QFETCH(QByteArray, message);
        QFETCH(bool, mayLogIn);
        QFETCH(bool, heard);
        const QString before = kept();
        // The connection's close comes after everything sent on it: once the console has
        // seen it, it has handled the whole message.
        QSignalSpy lost(&fx->console->server(), &TerminalServer::connectionLost);
        sender->write(message);
        sender->disconnectFromHost();
        QTRY_COMPARE_WITH_TIMEOUT(lost.size(), 1, 10000);

        QCOMPARE(fx->console->messageLog().contains(u"paper"_s) ||
                     fx->prompts.texts().join(u' ').contains(u"paper"_s),
                 heard);
        QCOMPARE(TerminalProbe::drain(*bystander), L{});
        QCOMPARE(TerminalProbe::drain(*holder), L{});
        QCOMPARE(kept(), before);
        for (int pc = 1; pc <= 24; ++pc)
            if (pc != Sender || !mayLogIn)
                QVERIFY2(fx->record(pc).logged == (pc == Holder), qPrintable(u"PC %1"_s.arg(pc)));
        for (const auto& shown : fx->prompts.shown)
            QVERIFY2(shown.title != u"Database error"_s &&
                         !shown.text.contains(u"syntax"_s, Qt::CaseInsensitive) &&
                         !shown.text.contains(u"no such"_s, Qt::CaseInsensitive) &&
                         !shown.text.contains(u"unrecognized token"_s, Qt::CaseInsensitive),
                     qPrintable(shown.text.left(200)));
        QVERIFY(!fx->console->messageLog().contains(u"DB ERR"_s));
        QCOMPARE(fx->scalar(u"PRAGMA integrity_check"_s).toString(), u"ok"_s);
    }
};

QTEST_MAIN(BadTerminalInputTest)
#include "tst_bad_terminal_input.moc"
