#include "people/peek_window.h"

#include "base/form_host.h"
#include "console/console.h"
#include "ui/accessibility.h"

#include <QApplication>
#include <QFile>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {

QLineEdit* shownField(QWidget* parent, const char* name) {
    auto* field = new QLineEdit(parent);
    field->setObjectName(QString::fromLatin1(name));
    field->setReadOnly(true);
    return field;
}

QPushButton* button(QWidget* parent, const char* name, const QString& caption) {
    auto* b = new QPushButton(caption, parent);
    b->setObjectName(QString::fromLatin1(name));
    b->setAutoDefault(false);
    return b;
}

// A snapshot file is a bitmap followed by the terminal's end mark.
QImage snapshotPicture(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QByteArray bytes = file.readAll();
    QImage picture = QImage::fromData(bytes, "BMP");
    if (picture.isNull() && bytes.endsWith(Protocol::SnapshotEnd))
        picture = QImage::fromData(bytes.chopped(Protocol::SnapshotEnd.size()), "BMP");
    return picture;
}

// The terminal's screen as it came (frmTrmPrv), titled with its customer and address.
class SnapshotWindow final : public QScrollArea {
public:
    explicit SnapshotWindow(const Console& console) : console_(console) {
        setObjectName(QStringLiteral("frmTrmPrv"));
        picture_ = new QLabel(this);
        picture_->setObjectName(QStringLiteral("imgSnap"));
        picture_->setAlignment(Qt::AlignCenter);
        setWidget(picture_);
        setWidgetResizable(true);
        setAccessibleName(QStringLiteral("Terminal's screen"));
    }
    const Console& console() const { return console_; }
    // The whole screen where the frame leaves room for it; scrolled beyond that.
    QSize sizeHint() const override {
        const QSize frame(2 * frameWidth() + 4, 2 * frameWidth() + 4);
        return (picture_->sizeHint() + frame).boundedTo({1000, 640}).expandedTo({480, 320});
    }
    void showPicture(const QString& path, const QString& title) {
        setWindowTitle(title);
        const QImage picture = snapshotPicture(path);
        picture_->setAccessibleName(title);
        if (picture.isNull()) {
            picture_->setText(QStringLiteral("The snapshot in %1 is not a picture.").arg(path));
            return;
        }
        picture_->setPixmap(QPixmap::fromImage(picture));
    }

private:
    const Console& console_;
    QLabel* picture_ = nullptr;
};

} // namespace

PeekWindow::PeekWindow(Console& console, FormHost& host, QWidget* parent)
    : QWidget(parent), console_(console), host_(host) {
    setObjectName(QStringLiteral("frmpeek"));

    lblpcno_ = new QLabel(this);
    lblpcno_->setObjectName(QStringLiteral("lblpcno"));
    QFont big = lblpcno_->font();
    big.setPointSizeF(big.pointSizeF() * 1.6);
    big.setBold(true);
    lblpcno_->setFont(big);
    txtsk_ = shownField(this, "txtsk");
    txtip_ = shownField(this, "txtip");
    txthname_ = shownField(this, "txthname");
    txtOS_ = shownField(this, "txtOS");

    auto* terminal = new QGroupBox(QStringLiteral("Terminal"), this);
    terminal->setObjectName(QStringLiteral("fraTerminal"));
    auto* form = new QFormLayout(terminal);
    form->addRow(QStringLiteral("PC"), lblpcno_);
    form->addRow(QStringLiteral("&Connection"), txtsk_);
    form->addRow(QStringLiteral("&Address"), txtip_);
    form->addRow(QStringLiteral("&Host name"), txthname_);
    form->addRow(QStringLiteral("&System"), txtOS_);

    lstProc_ = new QListWidget(this);
    lstProc_->setObjectName(QStringLiteral("lstProc"));
    lstProc_->setAccessibleName(QStringLiteral("Processes"));
    lstProc_->setSelectionMode(QAbstractItemView::MultiSelection);
    lstProc_->setUniformItemSizes(true);
    auto* processes = new QGroupBox(QStringLiteral("&Processes (click to choose)"), this);
    processes->setObjectName(QStringLiteral("fraProcesses"));
    (new QVBoxLayout(processes))->addWidget(lstProc_);

    lblsnap_ = new QLabel(this);
    lblsnap_->setObjectName(QStringLiteral("lblsnap"));
    lblsnap_->setWordWrap(true);

    QPushButton* cmdpeek = button(this, "cmdpeek", QStringLiteral("&List processes"));
    QPushButton* cmdkill = button(this, "cmdkill", QStringLiteral("&End chosen"));
    QPushButton* snapshot = button(this, "CmdTrmPrv", QStringLiteral("S&napshot"));
    QPushButton* cmdclose = button(this, "cmdclose", QStringLiteral("Close"));
    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {cmdpeek, cmdkill, snapshot})
        buttons->addWidget(b);
    buttons->addStretch(1);
    buttons->addWidget(cmdclose);

    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    top->addWidget(terminal);
    top->addWidget(processes, 1);
    layout->addLayout(top, 1);
    layout->addWidget(lblsnap_);
    layout->addLayout(buttons);

    connect(cmdpeek, &QPushButton::clicked, this, [this] {
        lstProc_->clear();
        requestProcesses(console_.sessionParts(), terminal_.socket);
    });
    connect(cmdkill, &QPushButton::clicked, this, &PeekWindow::killChosen);
    connect(snapshot, &QPushButton::clicked, this, &PeekWindow::askSnapshot);
    connect(cmdclose, &QPushButton::clicked, this, [this] {
        if (auto* sub = qobject_cast<QMdiSubWindow*>(parentWidget()))
            sub->close();
        else
            close();
    });
    connect(&console_.terminalMessages(), &TerminalMessages::processesReceived, this,
            &PeekWindow::addProcesses);
    connect(&console_.snapshots(), &SnapshotReceiver::progress, this,
            [this](const QString& text, int pc) {
                if (pc == terminal_.pc)
                    lblsnap_->setText(text);
            });
    connect(&console_.snapshots(), &SnapshotReceiver::received, this, &PeekWindow::showSnapshot);
}

void PeekWindow::lookInto(int pc, int socket) {
    terminal_ = peekTerminal(console_.sessionParts(), pc, socket);
    setWindowTitle(QStringLiteral("Processes of PC ") + QString::number(pc));
    lblpcno_->setText(QString::number(pc));
    txtsk_->setText(QString::number(socket));
    txtip_->setText(terminal_.address);
    txthname_->setText(terminal_.hostName);
    txtOS_->setText(terminal_.os);
    lstProc_->clear();
    lblsnap_->clear();
}

void PeekWindow::addProcesses(const QStringList& processes, int pc) {
    if (pc != terminal_.pc)
        return;
    const int room = MostProcesses - lstProc_->count();
    if (room > 0)
        lstProc_->addItems(processes.mid(0, room));
}

void PeekWindow::killChosen() {
    QStringList chosen;
    for (int row = 0; row < lstProc_->count(); ++row)
        if (lstProc_->item(row)->isSelected())
            chosen << lstProc_->item(row)->text();
    killProcesses(console_.sessionParts(), terminal_.socket, chosen);
}

void PeekWindow::askSnapshot() {
    if (console_.snapshots().request(terminal_.pc))
        lblsnap_->setText(QStringLiteral("Asked PC %1 for its screen...").arg(terminal_.pc));
    else
        lblsnap_->setText(QStringLiteral("PC %1 is not connected: its screen cannot be asked for.")
                              .arg(terminal_.pc));
}

void PeekWindow::showSnapshot(const QString& path, const QString& title, int pc) {
    if (pc != terminal_.pc)
        return;
    SnapshotWindow* shown = nullptr;
    for (QWidget* w : QApplication::allWidgets())
        if (auto* s = dynamic_cast<SnapshotWindow*>(w); s && &s->console() == &console_)
            shown = s;
    if (!shown)
        shown = new SnapshotWindow(console_);
    shown->showPicture(path, title);
    host_.showForm(shown, false);
}

void openPeek(Console& console, FormHost& host, int pc, int socket) {
    PeekWindow* peek = nullptr;
    for (QWidget* w : QApplication::allWidgets())
        if (auto* p = qobject_cast<PeekWindow*>(w); p && &p->console() == &console)
            peek = p;
    if (!peek)
        peek = new PeekWindow(console, host);
    peek->lookInto(pc, socket);
    host.showForm(peek, false);
}
