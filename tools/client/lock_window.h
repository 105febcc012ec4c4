#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>

class CustomerSession;
class InputGrab;
class MemberForm;
class OperatorMessagePanel;
class QFrame;
class QLabel;
class QLineEdit;
class QPushButton;
class QScreen;

// The lock screen, shown whenever no session runs: the café's name, what the PC is
// waiting for (locked, paused with the time used, thanks), the rates, the products, the
// member log-in, a button that calls the operator and a line for a note to the operator.
// Full screen above every other window; on X11 it holds keyboard and pointer.
class LockWindow : public QWidget {
    Q_OBJECT
public:
    LockWindow(const CustomerSession& session, const QString& cafeName, int pc,
               QWidget* parent = nullptr);
    ~LockWindow() override;

    MemberForm& memberForm() { return *memberForm_; }
    OperatorMessagePanel& messagePanel() { return *messagePanel_; }

    // Shows it over the whole of `screen` (or as a plain window), grabbing the input when
    // `grab` is set and the platform allows it.
    void lock(QScreen* screen, bool fullScreen, bool grab);
    void unlock();
    bool holdsInput() const;

    // The session's state and figures, the rates and the products, as they stand now.
    void refresh();
    void showRates();
    void showProducts();
    // The footer: how this PC stands with the console (or what is wrong with its
    // settings), in words.
    void showConnection(const QString& text, bool good);
    // What became of the call for the operator, and of the note.
    void showCallState(const QString& text, bool good);
    void showNoteState(const QString& text, bool good);
    void showOperatorMessage(const QString& text);
    void showNotice(const QString& text);

Q_SIGNALS:
    void operatorCalled();
    void noteRequested(const QString& text);

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QFrame* panel(const QString& objectName);
    void applyScale();
    void sendNote();

    const CustomerSession& session_;
    int pc_;
    InputGrab* grab_;
    QLabel* cafe_;
    QLabel* headline_;
    QLabel* detail_;
    QLabel* figures_;
    QLabel* ratesTitle_;
    QLabel* rates_;
    QLabel* productsTitle_;
    QLabel* products_;
    QFrame* productsPanel_;
    MemberForm* memberForm_;
    QPushButton* callOperator_;
    QLabel* callState_;
    QLineEdit* note_;
    QPushButton* sendNote_;
    QLabel* noteState_;
    OperatorMessagePanel* messagePanel_;
    QFrame* messageFrame_;
    QLabel* connection_;
    int unit_ = 0;
};

// What the other monitors show while the PC is locked.
class LockCover : public QWidget {
    Q_OBJECT
public:
    explicit LockCover(const QString& cafeName, QWidget* parent = nullptr);
    void cover(QScreen* screen);

protected:
    void closeEvent(QCloseEvent* event) override;
};
