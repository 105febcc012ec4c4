#pragma once

#include <QObject>
#include <QString>
#include <QTime>
#include <QTimer>

#include <functional>
#include <map>
#include <memory>
#include <vector>

// The day's customers, as "LAST, FIRST".
int customerCount();
QString customerName(int k);

class Console;
class MainWindow;
class SpeedClock;
class TerminalClient;
class QWidget;

// A café's day on the console's own windows: customers log on from their PCs, the
// operator sets limits, pauses, resumes, extends, stops and bills sessions, sells services
// and prints the day's report, each at its time of day, all through the controls'
// object names. What the operator saw on the bills is kept for the final check.
class CafeDay : public QObject {
    Q_OBJECT
public:
    CafeDay(Console& console, MainWindow& frame, SpeedClock& clock, const QString& screenshots);
    ~CafeDay() override;

    // Connects the terminals; false when the console did not accept them all.
    bool connectTerminals(int count);
    // Plans the day; finished() is emitted after its last step.
    void plan();
    void start();

    struct Totals {
        qint64 billedCents = 0;   // the amounts due of the bills saved
        qint64 servicesCents = 0; // the totals of the services sold
        int bills = 0;
        int sales = 0;
        bool reportPrinted = false;
        int warnings = 0; // "WARN" seen by the terminals
        int pauses = 0;   // "PAUS" seen by the terminals
    };
    const Totals& totals() const { return totals_; }
    QStringList problems() const { return problems_; }

Q_SIGNALS:
    void finished();

private:
    void at(QTime time, QString what, std::function<void()> step);
    void runDueSteps();
    void logOn(int pc, const QString& id, const QString& name);
    void setLimit(int pc, const QString& minutes);
    void popupCommand(int pc, const char* action);
    void bill(int pc);
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
    Totals totals_;
    QStringList problems_;
};
