#include "ui/prompts_dialog.h"

#include "base/clock.h"
#include "ui/accessibility.h"
#include "ui/console_box_dialog.h"
#include "ui/dialog_frame.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QListView>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStandardItemModel>
#include <QStyle>

namespace {

QString titleOrName(const QString& title) {
    return title.isEmpty() ? QStringLiteral("Tarvo QRB") : title;
}

QMessageBox::Icon boxIcon(Prompts::Icon icon) {
    switch (icon) {
    case Prompts::Icon::Critical:
        return QMessageBox::Critical;
    case Prompts::Icon::Question:
        return QMessageBox::Question;
    case Prompts::Icon::Exclamation:
        return QMessageBox::Warning;
    case Prompts::Icon::Information:
        return QMessageBox::Information;
    case Prompts::Icon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

QStyle::StandardPixmap listIcon(Prompts::Icon icon) {
    switch (icon) {
    case Prompts::Icon::Critical:
        return QStyle::SP_MessageBoxCritical;
    case Prompts::Icon::Question:
        return QStyle::SP_MessageBoxQuestion;
    case Prompts::Icon::Exclamation:
        return QStyle::SP_MessageBoxWarning;
    case Prompts::Icon::Information:
    case Prompts::Icon::None:
        break;
    }
    return QStyle::SP_MessageBoxInformation;
}

} // namespace

WidgetPrompts::WidgetPrompts(Clock& clock)
    : clock_(clock), noticeModel_(std::make_unique<QStandardItemModel>()) {}

WidgetPrompts::~WidgetPrompts() {
    // Windows without a parent are ours to end; the others go with their parent.
    if (notices_ && !notices_->parent())
        delete notices_.data();
    if (modeless_ && !modeless_->parent())
        delete modeless_.data();
}

void WidgetPrompts::setParentWindow(QWidget* parent) {
    parent_ = parent;
}

Prompts::Answer WidgetPrompts::ask(const QString& text, const QString& title, Buttons buttons,
                                   Icon icon) {
    QMessageBox box(boxIcon(icon), titleOrName(title), text, QMessageBox::NoButton, parent_);
    switch (buttons) {
    case Buttons::Ok:
        box.setStandardButtons(QMessageBox::Ok);
        box.setDefaultButton(QMessageBox::Ok);
        box.setEscapeButton(QMessageBox::Ok);
        break;
    case Buttons::OkCancel:
        box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
        box.setDefaultButton(QMessageBox::Ok);
        box.setEscapeButton(QMessageBox::Cancel);
        break;
    case Buttons::YesNo:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        box.setDefaultButton(QMessageBox::Yes);
        box.setEscapeButton(QMessageBox::No);
        break;
    }
    box.setObjectName(QStringLiteral("msgbox"));
    const std::pair<QMessageBox::StandardButton, const char*> buttonNames[] = {
        {QMessageBox::Ok, "cmdok"},
        {QMessageBox::Cancel, "cmdcancel"},
        {QMessageBox::Yes, "cmdyes"},
        {QMessageBox::No, "cmdno"}};
    for (const auto& [which, name] : buttonNames)
        if (QAbstractButton* button = box.button(which))
            button->setObjectName(QString::fromLatin1(name));
    makeAccessible(&box);
    switch (box.exec()) {
    case QMessageBox::Cancel:
        return Answer::Cancel;
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    default:
        return Answer::Ok;
    }
}

QDialog* WidgetPrompts::noticeWindow() {
    if (notices_)
        return notices_;
    auto* w = new QDialog(parent_);
    w->setObjectName(QStringLiteral("frmNotices"));
    w->setWindowTitle(QStringLiteral("Tarvo QRB - Notices"));
    w->setModal(false);
    // A notice must not take the keyboard from whatever the operator is typing.
    w->setAttribute(Qt::WA_ShowWithoutActivating);
    w->resize(460, 320);

    auto* latest = new QLabel(w);
    latest->setObjectName(QStringLiteral("lblLatest"));
    latest->setWordWrap(true);
    latest->setTextFormat(Qt::PlainText);
    QFont bold = latest->font();
    bold.setBold(true);
    latest->setFont(bold);
    // One line per notice, all of one height: adding a notice costs the same however many
    // are shown, even when a terminal floods the console with long ones.
    QStandardItemModel* model = noticeModel_.get();
    auto* list = new QListView(w);
    list->setObjectName(QStringLiteral("lstNotices"));
    list->setAccessibleName(QStringLiteral("Notices"));
    list->setModel(model);
    list->setUniformItemSizes(true);
    list->setWordWrap(false);
    list->setTextElideMode(Qt::ElideRight);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    auto* text = new QPlainTextEdit(w);
    text->setObjectName(QStringLiteral("txtNotice"));
    text->setAccessibleName(QStringLiteral("Whole notice"));
    text->setReadOnly(true);
    text->setMaximumHeight(96);
    text->setPlaceholderText(QStringLiteral("Choose a notice to read it whole."));
    QObject::connect(list, &QListView::clicked, text, [text](const QModelIndex& index) {
        text->setPlainText(index.data(FullTextRole).toString());
    });

    const DialogFrame frame =
        frameDialog(*w, QString(), QString(), {{{}, latest}, {{}, list}, {{}, text}},
                    {{"cmdclear", QStringLiteral("Clear"), QDialogButtonBox::ResetRole},
                     {"cmdclose", QStringLiteral("Close"), QDialogButtonBox::RejectRole}});
    QObject::connect(frame.button("cmdclear"), &QPushButton::clicked, model, [model, latest, text] {
        model->clear();
        latest->clear();
        text->clear();
    });
    QObject::connect(frame.button("cmdclose"), &QPushButton::clicked, w, &QDialog::hide);
    makeAccessible(w);

    notices_ = w;
    latest_ = latest;
    noticeList_ = list;
    noticeText_ = text;
    return w;
}

namespace {
// A notice as one line of at most `length` characters.
QString oneLine(QString text, int length) {
    if (text.size() > length)
        text = text.left(length - 1) + QChar(0x2026);
    return text.replace(QLatin1Char('\r'), QLatin1Char(' '))
        .replace(QLatin1Char('\n'), QLatin1Char(' '));
}
} // namespace

void WidgetPrompts::notice(const QString& text, const QString& title, Icon icon) {
    const QString heading = titleOrName(title);
    const QString whole = heading + QStringLiteral(": ") + text;
    const QString stamp = clock_.now().time().toString(QStringLiteral("HH:mm:ss"));
    auto* item = new QStandardItem(QApplication::style()->standardIcon(listIcon(icon)),
                                   stamp + QStringLiteral("  ") + oneLine(whole, NoticeLineLength));
    item->setData(stamp + QStringLiteral("  ") + whole, FullTextRole);
    item->setToolTip(QStringLiteral("Click to read the whole notice below."));
    noticeModel_->insertRow(0, item);
    if (noticeModel_->rowCount() > NoticeLimit)
        noticeModel_->removeRows(NoticeLimit, noticeModel_->rowCount() - NoticeLimit);
    if (reader_)
        return;

    QDialog* w = noticeWindow();
    latest_->setText(oneLine(whole, NoticeLineLength));

    // A flood raises the window once a second, not once a notice.
    const qint32 now = clock_.tickCount();
    if (!w->isVisible() || quint32(now) - quint32(raisedAt_) >= 1000u) {
        w->show();
        w->raise();
        raisedAt_ = now;
    }
}

QString WidgetPrompts::consoleBox(const ConsoleBox& box) {
    if (!box.modal) {
        // One box at a time: a new notice replaces the one on screen instead of stacking.
        if (!modeless_)
            modeless_ = new ConsoleBoxDialog(clock_, parent_);
        modeless_->setModal(false);
        modeless_->setBox(box);
        if (!modeless_->isVisible())
            modeless_->show();
        modeless_->raise();
        return QString();
    }

    QPointer<ConsoleBoxDialog> dialog = new ConsoleBoxDialog(clock_, parent_);
    dialog->setBox(box);
    dialog->exec();
    // The parent may have gone while the box was up.
    if (!dialog)
        return QString();
    const QString result = dialog->resultText();
    delete dialog.data();
    return result;
}
