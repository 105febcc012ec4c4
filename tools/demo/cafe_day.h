#pragma once

#include "customer_session.h"

#include <QObject>
#include <QString>
#include <QTime>
#include <QTimer>

#include <functional>
#include <map>
#include <memory>
#include <vector>

// The day's customers, as "LAST, FIRST", and their ids in the members register.
int customerCount();
QString customerName(int k);
QString customerId(int k);

class ClientApp;
class Console;
class MainWindow;
class SpeedClock;
class TerminalClient;
class QDialog;
class QWidget;

// A café's day on the console's own windows: customers log on from their PCs or are put
// on them at the counter, the operator sets limits, pauses, resumes, extends, stops and
// bills sessions, sells services and prints the day's report, each at its time of day,
// all through the controls' object names. Two PCs run the real terminal client, whose
// meter the customer reads. What the operator saw on the bills, and what those two
// customers saw on their meters, is kept for the final check.
class CafeDay : public QObject {
    Q_OBJECT
public:
    CafeDay(Console& console, MainWindow& frame, SpeedClock& clock, const QString& screenshots);
    ~CafeDay() override;

    // The PCs that run the terminal client with its windows.
    static constexpr int ClientPcs[] = {21, 22};

    // Connects the terminals; false when the console did not accept them all.
    bool connectTerminals(int count);
    // Plans the day; finished() is emitted after its last step.
    void plan();
    void start();

    // A customer's meter beside the amount due on the bill saved for that PC.
    struct MeterReading {
        int pc = 0;
        QString meter; // as the meter shows it, "P 1,234.50"
        QString due;   // as the bill shows it, "1,234.50"
        bool matches() const;
    };
    struct Totals {
        qint64 billedCents = 0;   // the amounts due of the bills saved
        qint64 servicesCents = 0; // the totals of the services sold
        int bills = 0;
        int sales = 0;
        bool reportPrinted = false;
        int warnings = 0;      // "WARN" seen by the terminals
        int pauses = 0;        // "PAUS" seen by the terminals
        int counterLogOns = 0; // customers put on PCs through the log-on dialog
        std::vector<MeterReading> meters;
    };
    const Totals& totals() const { return totals_; }
    QStringList problems() const { return problems_; }

Q_SIGNALS:
    void finished();

private:
    void at(QTime time, QString what, std::function<void()> step);
    void runDueSteps();
    enum class OpenFrom { Toolbar, PopupMenu, BoardTile };
    enum class Find { WalkIn, MemberById, MemberByName };

    void countMessages(TerminalClient* terminal, bool identifies);
    bool startClient(int pc);
    void logOn(int pc, const QString& id, const QString& name);
    // The operator puts a walk-in, or member `member` of the register, on the PC through
    // the log-on dialog.
    void logOnAtCounter(int pc, OpenFrom from, Find find, int member = -1);
    bool pickTerminal(QDialog* logmem, int pc);
    bool passMember(QDialog* logmem, Find find, int member);
    // A step on a PC with the client, with the café's clock held until the client has
    // taken the console's word: the meter counts from the same instant as the console.
    void inStep(int pc, CustomerSession::Screen screen, const std::function<void()>& step);
    void billWithMeter(int pc);
    void setLimit(int pc, const QString& minutes);
    void popupCommand(int pc, const char* action);
    // `beforeSave` gets the amount due just before the bill is saved.
    void bill(int pc, const std::function<void(const QString&)>& beforeSave = {});
    void sellService(int service, const QString& quantity, const QString& receipt);
    void printDayReport();
    QWidget* board();
    void photograph(QWidget* w, const QString& name);
    void problem(const QString& text);

    struct Step {
        QTime time;
        QString what;
        std::function<void()> run;
    };
    Console& console_;
    MainWindow& frame_;
    SpeedClock& clock_;
    QString screenshots_;
    std::vector<Step> steps_;
    size_t next_ = 0;
    QTimer pace_;
    std::map<int, std::unique_ptr<TerminalClient>> terminals_;
    std::map<int, std::unique_ptr<ClientApp>> clients_;
    int accepted_ = 0; // bare terminals the console accepted
    Totals totals_;
    QStringList problems_;
};
