#pragma once

#include <QPoint>
#include <QWidget>

class CustomerSession;
class QLabel;
class QScreen;

// The customer's meter while a session runs: a small window above all others, in a
// corner of the screen, with the start time, the time used, the time left when a limit
// is set, and the amount so far as the console computes it. It can be dragged aside.
class MeterWindow : public QWidget {
    Q_OBJECT
public:
    MeterWindow(const CustomerSession& session, int pc, QWidget* parent = nullptr);

    // Shown in the top right corner of the screen (the first time; after that where the
    // customer left it).
    void showOn(QScreen* screen);
    // The figures as they stand now; the session's clock moves them.
    void refresh();
    // Whether the console can be reached: while it cannot, the meter says the time is
    // still counted.
    void setOnline(bool online);

protected:
    void closeEvent(QCloseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    const CustomerSession& session_;
    QLabel* pc_;
    QLabel* start_;
    QLabel* elapsedTitle_;
    QLabel* elapsed_;
    QLabel* leftTitle_;
    QLabel* left_;
    QLabel* amountTitle_;
    QLabel* amount_;
    QLabel* warning_;
    QLabel* link_;
    bool placed_ = false;
    QPoint dragFrom_;
};
