// `make demo`: a café's day on the console, headless and faster than real time. The
// console's real windows and logic run offscreen on a fresh data folder; 24 terminals
// connect over real TCP, two of them the terminal client with its windows and the rest
// the project's terminal library; the day's steps are carried out through the windows'
// controls; at the end the database is checked against what the operator saw, the
// clients' meters against the bills, and the places of the billing log, statements and
// screenshots are printed.
// Usage: tarvoqrb-demo [OUTPUT_FOLDER] [--speed N]
#include "base/app_folder.h"
#include "base/prompts.h"
#include "cafe_day.h"
#include "console/console.h"
#include "console/startup_checks.h"
#include "speed_clock.h"
#include "store/database.h"
#include "ui/main_window.h"
#include "window_photos.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTextStream>

namespace {
QTextStream out(stdout);

// The operator of the demo: every question answered Yes, every message read, all written
// down in the order they came.
class DemoPrompts final : public Prompts {
public:
    explicit DemoPrompts(const QString& path) : file_(path) {
        file_.open(QIODevice::WriteOnly | QIODevice::Text);
    }
    Answer ask(const QString& text, const QString& title, Buttons buttons, Icon) override {
        write(title, text);
        return buttons == Buttons::YesNo ? Answer::Yes : Answer::Ok;
    }
    void notice(const QString& text, const QString& title, Icon) override { write(title, text); }
    QString consoleBox(const ConsoleBox& box) override {
        write(box.title, box.text);
        return QString();
    }

private:
    void write(const QString& title, const QString& text) {
        file_.write((title + QStringLiteral(": ") + text + QLatin1Char('\n')).toUtf8());
        file_.flush();
    }
    QFile file_;
};

void prepareData(const QString& folder) {
    QFile ini(QDir(folder).filePath(QStringLiteral("TarvoQRB.INI")));
    ini.open(QIODevice::WriteOnly);
    // The statements go to PDF files: a demo prints on no one's printer.
    ini.write("24=NOFPC\n1=PAGE\nPlease don't Modify....\nPDF=PRINTTO\n");
}

void fillRegister(const Database& db) {
    DbSession s(db);
    s.begin();
    s.run(QStringLiteral("INSERT INTO sysusers (user, utype, keys) VALUES (?, ?, ?)"),
          {QStringLiteral("DEMO"), QStringLiteral("Admin"), QStringLiteral("demo")});
    for (int k = 0; k < customerCount(); ++k) {
        const QStringList name = customerName(k).split(QStringLiteral(", "));
        s.run(QStringLiteral("INSERT INTO members (CID, LN, FN, MN, ADR, mdate) VALUES (?, ?, ?, "
                             "?, ?, ?)"),
              {customerId(k), name.value(0), name.value(1), QStringLiteral("M"),
               QStringLiteral("Quezon City"), QDate(2026, 1, 5).addDays(k * 9)});
    }
    const std::pair<const char*, double> services[] = {
        {"Printing, per page", 5}, {"Scanning", 10}, {"Coffee", 25}, {"CD burning", 50}};
    for (const auto& [description, amount] : services)
        s.run(QStringLiteral("INSERT INTO Services (Description, Amount) VALUES (?, ?)"),
              {QString::fromLatin1(description), amount});
    s.commit();
}

QVariant scalar(const Database& db, const QString& sql) {
    DbSession s(db);
    auto q = s.run(sql);
    return q.next() ? q.value(0) : QVariant();
}
} // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    raiseOpenFilesLimit();
    QApplication app(argc, argv);
    QStringList args = QCoreApplication::arguments().mid(1);
    int speed = 60;
    if (const qsizetype at = args.indexOf(QStringLiteral("--speed")); at >= 0) {
        speed = qBound(1, args.value(at + 1).toInt(), 600);
        args.remove(at, qMin<qsizetype>(2, args.size() - at));
    }
    const QString output = QDir(args.value(0, QStringLiteral("demo"))).absolutePath();
    const QString data = QDir(output).filePath(QStringLiteral("data"));
    const QString shots = QDir(output).filePath(QStringLiteral("screenshots"));
    QDir(data).removeRecursively();
    QDir().mkpath(data);
    QDir().mkpath(shots);
    prepareData(data);

    const QDate today = QDate::currentDate();
    SpeedClock clock(speed, QDateTime(today, QTime(9, 58)));
    DemoPrompts prompts(QDir(output).filePath(QStringLiteral("operator_messages.txt")));
    AppFolder folder(data);
    Console console(clock, prompts, folder);
    try {
        console.openStorage();
        fillRegister(console.database());
        console.startUp(0, QDir(data).filePath(QStringLiteral("odbc.ini")));
    } catch (const StoreError& e) {
        out << "the console could not start: " << e.text() << Qt::endl;
        return 1;
    }
    console.currentOperator() = {QStringLiteral("DEMO"), QStringLiteral("Admin"),
                                 QStringLiteral("demo")};
    MainWindow frame(console);
    frame.setModalShowsBlock(false);
    frame.resize(1366, 768);
    frame.show();
    frame.finishLoading();

    out << "A café's day at " << speed << " times real time, data in " << data << Qt::endl;
    CafeDay day(console, frame, clock, shots);
    if (!day.connectTerminals(24)) {
        out << "the console did not accept 24 terminals" << Qt::endl;
        return 1;
    }
    day.plan();
    // Not quit(): it asks every window to close first, and the clients' meters refuse.
    QObject::connect(&day, &CafeDay::finished, &app, [] { QCoreApplication::exit(0); });
    day.start();
    QCoreApplication::exec();
    const QStringList photoProblems = photographWindows(console, frame, shots);

    // The self-check: the revenue rows are the bills the operator saved, to the centavo.
    const Database& db = console.database();
    const auto& t = day.totals();
    const qint64 rows = scalar(db, QStringLiteral("SELECT count(*) FROM TmpRvnD WHERE rtype = "
                                                  "'GAMES_RENTALS'"))
                            .toLongLong();
    const qint64 cents =
        qRound64(scalar(db, QStringLiteral("SELECT total(Amount) FROM TmpRvnD WHERE rtype = "
                                           "'GAMES_RENTALS'"))
                     .toDouble() *
                 100.0);
    const qint64 open =
        scalar(db, QStringLiteral("SELECT count(*) FROM templog WHERE isout = 0")).toLongLong();
    const qint64 serviceRows = scalar(db, QStringLiteral("SELECT count(*) FROM TmpRvnD WHERE "
                                                         "rtype = 'SERVICE'"))
                                   .toLongLong();
    const qint64 serviceCents = qRound64(
        scalar(db, QStringLiteral("SELECT total(Amount) FROM TmpRvnD WHERE rtype = 'SERVICE'"))
            .toDouble() *
        100.0);
    const QDir pdfs(QDir(data).filePath(QStringLiteral("Statements")));
    const QStringList statements = pdfs.entryList({"Statement_*.pdf"}, QDir::Files);
    const QStringList reports = pdfs.entryList({"Summary_*.pdf"}, QDir::Files);
    const QStringList logs = QDir(data).entryList({"*.LG2"}, QDir::Files);

    QStringList failures = day.problems() + photoProblems;
    auto check = [&failures](bool ok, const QString& what) {
        if (!ok)
            failures << what;
    };
    check(rows == t.bills, QStringLiteral("%1 revenue rows for %2 bills").arg(rows).arg(t.bills));
    check(cents == t.billedCents, QStringLiteral("revenue %1 against bills %2")
                                      .arg(cents / 100.0, 0, 'f', 2)
                                      .arg(t.billedCents / 100.0, 0, 'f', 2));
    check(open == 0, QStringLiteral("%1 sessions still open").arg(open));
    check(statements.size() == t.bills,
          QStringLiteral("%1 statements for %2 bills").arg(statements.size()).arg(t.bills));
    check(serviceRows == t.sales && serviceCents == t.servicesCents,
          QStringLiteral("%1 service rows of P %2 for %3 sales of P %4")
              .arg(serviceRows)
              .arg(serviceCents / 100.0, 0, 'f', 2)
              .arg(t.sales)
              .arg(t.servicesCents / 100.0, 0, 'f', 2));
    check(t.reportPrinted && reports.size() == 1,
          QStringLiteral("the day's report was not saved as PDF"));
    check(t.warnings > 0, QStringLiteral("no terminal was warned of its limit"));
    check(t.pauses >= 3, QStringLiteral("only %1 pauses reached the terminals").arg(t.pauses));
    check(t.counterLogOns == 5,
          QStringLiteral("%1 of 5 customers put on PCs at the counter").arg(t.counterLogOns));
    // What the customer saw on the meter is what the operator billed.
    check(t.meters.size() == std::size(CafeDay::ClientPcs),
          QStringLiteral("%1 meters read for %2 PCs with the client")
              .arg(t.meters.size())
              .arg(std::size(CafeDay::ClientPcs)));
    for (const auto& m : t.meters)
        check(m.matches(), QStringLiteral("PC %1's meter showed %2, its bill %3 due")
                               .arg(m.pc)
                               .arg(m.meter, m.due));

    out << "\nThe day in figures:\n"
        << "  bills saved:       " << t.bills << ", P "
        << QString::number(t.billedCents / 100.0, 'f', 2) << " (revenue rows: " << rows << ", P "
        << QString::number(cents / 100.0, 'f', 2) << ")\n"
        << "  services sold:     " << t.sales << ", P "
        << QString::number(t.servicesCents / 100.0, 'f', 2) << " (revenue rows: " << serviceRows
        << ", P " << QString::number(serviceCents / 100.0, 'f', 2) << ")\n"
        << "  limit warnings:    " << t.warnings << ", pauses told to terminals: " << t.pauses
        << "\n  put on at counter: " << t.counterLogOns << " (walk-ins and members)\n";
    for (const auto& m : t.meters)
        out << "  meter of PC " << m.pc << ":    " << m.meter << " on the client, " << m.due
            << " due on the bill" << (m.matches() ? "" : "  MISMATCH") << '\n';
    out << "\nWhere to look:\n"
        << "  billing log:       " << QDir(data).filePath(logs.value(0)) << '\n'
        << "  statements (PDF):  " << QDir(data).filePath(QStringLiteral("Statements")) << " ("
        << statements.size() << " statements, day's report " << reports.value(0) << ")\n"
        << "  screenshots:       " << shots << '\n'
        << "  operator messages: " << QDir(output).filePath(QStringLiteral("operator_messages.txt"))
        << "\n\n";
    if (!failures.isEmpty()) {
        out << "SELF-CHECK FAILED:\n  " << failures.join(QStringLiteral("\n  ")) << Qt::endl;
        return 1;
    }
    out << "Self-check passed: the revenue rows are the bills and the sales saved, and the "
           "customers' meters are their bills."
        << Qt::endl;
    return 0;
}
