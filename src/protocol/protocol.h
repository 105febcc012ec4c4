#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <optional>
#include <span>

// The terminal protocol as one table: every word each side sends, and how the rest of
// the message follows it. A message is one send of plain text: no terminator, no length.
namespace Protocol {

// How a message goes on after its word.
enum class Shape {
    Bare,        // the word is the whole message ("RTS", "CMTR")
    Text,        // the word, a separator, free text ("TXT hello", "TLMT 90")
    LogIn,       // the word, a separator, id ":" name ";" PC number
    Number,      // the prefix, then a whole number ("AIP7", "PAUS 5000", "SBTK @5000")
    Time,        // the prefix, then "HH:MM:SS"
    Items,       // the prefix, then items each ended by ";" ("APL a;b;")
    ProductList, // the prefix, items each ended by ";", then "End"
    Binary,      // the prefix, then raw bytes (a snapshot's first piece)
};

// A screen snapshot travels as a bitmap file cut in pieces of this size, the last one
// followed by the end mark; the console looks for the mark in a piece's last ten bytes.
constexpr int SnapshotPieceSize = 8192;
constexpr QByteArrayView SnapshotEnd = "Close";
constexpr qsizetype SnapshotEndWindow = 10;

// What a terminal sends, in the order the console tries them.
enum class TerminalWord {
    LogOnDialog, // "Loa"
    LogIn,       // "LOG"
    Identify,    // "AIP"
    Rates,       // "RTS"
    CheckMember, // "CHK"
    Text,        // "TXT"
    Products,    // "PLS"
    Alert,       // "EMT"
    Processes,   // "APL"
    Snapshot,    // "BM6"
};

// What the console sends.
enum class ConsoleWord {
    Accept,           // "ACPT"
    StartMeter,       // "SMTR " + start time
    Pause,            // "PAUS " + banked ms
    PausedState,      // "PAUS": a paused PC identified itself
    Resume,           // "PAUX " + start time
    BankedTime,       // "SBTK @" + banked ms
    TimeLimit,        // "TLMT " + minutes or "U"
    Warn,             // "WARN " + text
    Unlock,           // "FREE Dummy Text"
    Lock,             // "XFRE Dummy Text"
    CloseMeter,       // "CMTR"
    Idle,             // "OFPS"
    LogOff,           // "LGOF"
    Restart,          // "RSTR"
    ShutDown,         // "PTAY"
    Text,             // "TEXT " + text
    RequestProcesses, // "RQPR"
    KillProcess,      // "KLPR " + process name
    RequestSnapshot,  // "SNPS"
    Rates,            // "SRPH " + rate ":" minutes ";" minimum
    TextReceived,     // "MSGR"
    InvalidMember,    // "INVD"
    LogSuccessful,    // "Log Successful"
    FailedLog,        // "Failed Log"
    FormLoggerLoaded, // "Form logger loaded"
    Products,         // "RAVP " + product list
};

template <typename Word> struct WordInfo {
    Word word;
    QByteArrayView text;   // the word itself, as compared
    QByteArrayView prefix; // what every message of it begins with
    Shape shape;
};

std::span<const WordInfo<TerminalWord>> terminalWords();
std::span<const WordInfo<ConsoleWord>> consoleWords();
const WordInfo<TerminalWord>& info(TerminalWord word);
const WordInfo<ConsoleWord>& info(ConsoleWord word);

// The word of a received message: its first three characters compared exactly, in the
// console's order; none for anything else (a snapshot's further piece, or junk).
std::optional<TerminalWord> classify(QByteArrayView message);

// The word of a message the console sent: a word that takes nothing must be the whole
// message, any other must begin it ("PAUS" is the paused state, "PAUS 5000" a pause).
// None for anything else.
std::optional<ConsoleWord> classifyConsole(QByteArrayView message);
// What follows the word's prefix in a message of that word.
QByteArray argumentOf(ConsoleWord word, QByteArrayView message);

// A message of the word: its prefix followed by the argument as it stands.
QByteArray message(ConsoleWord word, QByteArrayView argument = {});
QByteArray message(TerminalWord word, QByteArrayView argument = {});

// The text of a message after its three-letter word and separator (from the fifth
// character on).
QString payloadOf(const QString& message);

// The log-in payload of "LOG" and "CHK": id ":" name ";" PC number.
struct LogInPayload {
    QString id;
    QString name;
    QString pcText;
    // None when the text lacks the ":" or the ";" (or they stand the wrong way round).
    static std::optional<LogInPayload> parse(const QString& payload);
    QString text() const { return id + QLatin1Char(':') + name + QLatin1Char(';') + pcText; }
};

// The rates of "SRPH ": rate per hour ":" minimum minutes ";" minimum amount, each a
// decimal number as the console's masks write it ("20.", "30.", "12.5", "." for 0).
struct RatesPayload {
    double ratePerHour = 0;
    double minimumMinutes = 0;
    double minimumAmount = 0;
    // None unless the three are there, in that order, and each is a number.
    static std::optional<RatesPayload> parse(const QString& payload);
};

// The products of "RAVP ": the items before the closing "End", each as the console's
// list file spells it ("Coffee @ 25.00"); blank items are dropped.
QStringList productItems(const QString& payload);

} // namespace Protocol

// Every message either side sends, built from the table.
namespace Msg {
// Console to terminal.
QByteArray accept();
QByteArray startMeter(const QString& startTime);
QByteArray pause(qint32 bankedMs);
QByteArray pausedState();
QByteArray resume(const QString& startTime);
QByteArray bankedTime(qint32 bankedMs);
QByteArray timeLimit(const QString& limit);
QByteArray warn(const QString& text);
QByteArray unlock();
QByteArray lock();
QByteArray closeMeter();
QByteArray idle();
QByteArray logOff();
QByteArray restart();
QByteArray shutDown();
QByteArray text(const QString& text);
QByteArray requestProcesses();
QByteArray killProcess(const QString& name);
QByteArray requestSnapshot();
// "SRPH " + rate "###.##" + ":" + minutes "#.########" + ";" + minimum "###.##".
QByteArray rates(double ratePerHour, qint32 minimumMinutes, double minimumAmount);
QByteArray textReceived();
QByteArray invalidMember();
QByteArray logSuccessful();
QByteArray failedLog();
QByteArray formLoggerLoaded();
QByteArray products(const QString& list);

// Terminal to console.
QByteArray identify(int pc);
QByteArray requestLogOnDialog();
QByteArray logIn(const QString& payload);
QByteArray checkMember(const QString& payload);
QByteArray requestRates();
QByteArray textToConsole(const QString& text);
QByteArray requestProducts();
QByteArray alert(const QString& text);
QByteArray processList(const QStringList& items);
} // namespace Msg
