#include "people/message_window.h"

#include "console/console.h"
#include "people/message_log_model.h"
#include "people/monitoring.h"

#include <QComboBox>
#include <QFontMetrics>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace {

// One line per entry, all of one height: a long list costs nothing to add to.
QListView* lineList(QWidget* parent, const char* name, const QString& what,
                    QAbstractItemModel* model) {
    auto* list = new QListView(parent);
    list->setObjectName(QString::fromLatin1(name));
    list->setAccessibleName(what);
    list->setModel(model);
    list->setUniformItemSizes(true);
    list->setWordWrap(false);
    list->setTextElideMode(Qt::ElideRight);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    return list;
}

QGroupBox* titled(QWidget* parent, const char* name, const QString& title, QWidget* inside,
                  QWidget* below = nullptr) {
    auto* box = new QGroupBox(title, parent);
    box->setObjectName(QString::fromLatin1(name));
    auto* layout = new QVBoxLayout(box);
    layout->addWidget(inside, 1);
    if (below)
        layout->addWidget(below, 0, Qt::AlignRight);
    return box;
}

} // namespace

MessageWindow::MessageWindow(Console& console, QAbstractItemModel* notices, QWidget* parent)
    : QWidget(parent), console_(console), notices_(notices) {
    setObjectName(QStringLiteral("frmtxtv"));
    setWindowTitle(QStringLiteral("Message Archiver"));

    auto* log = new MessageLogModel(console.messageLog(), this);
    QListView* lstLog = lineList(this, "lstLog", QStringLiteral("Terminal messages"), log);
    auto* split = new QSplitter(Qt::Vertical, this);
    split->setObjectName(QStringLiteral("splMessages"));
    split->setChildrenCollapsible(false);
    split->addWidget(
        titled(split, "fraLog", QStringLiteral("What the terminals said, newest first"), lstLog));

    txtWhole_ = new QPlainTextEdit(this);
    txtWhole_->setObjectName(QStringLiteral("txtWhole"));
    txtWhole_->setAccessibleName(QStringLiteral("Whole line"));
    txtWhole_->setReadOnly(true);
    txtWhole_->setMaximumHeight(txtWhole_->fontMetrics().lineSpacing() * 4 + 12);
    txtWhole_->setPlaceholderText(QStringLiteral("Choose a line to read it whole."));
    auto readWhole = [this](const QModelIndex& index) {
        txtWhole_->setPlainText(index.data(MessageLogModel::FullTextRole).toString());
    };
    connect(lstLog, &QListView::clicked, this, readWhole);

    if (notices) {
        QListView* lstNotices = lineList(this, "lstNotices", QStringLiteral("Notices"), notices);
        auto* cmdclear = new QPushButton(QStringLiteral("Clear notices"), this);
        cmdclear->setObjectName(QStringLiteral("cmdclear"));
        connect(cmdclear, &QPushButton::clicked, this, [this] {
            if (notices_)
                notices_->removeRows(0, notices_->rowCount());
            txtWhole_->clear();
        });
        connect(lstNotices, &QListView::clicked, this, readWhole);
        split->addWidget(titled(split, "fraNotices",
                                QStringLiteral("Notices: what went wrong, newest first"),
                                lstNotices, cmdclear));
    }

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(split, 1);
    layout->addWidget(txtWhole_);
    layout->addWidget(buildReplyRow());
}

QSize MessageWindow::sizeHint() const {
    // Room for a line of about eighty characters, and a dozen lines of each list.
    const QFontMetrics metrics = fontMetrics();
    const int lists = notices_ ? 2 : 1;
    return {metrics.horizontalAdvance(QLatin1Char('x')) * 84 + 48,
            metrics.lineSpacing() * (12 * lists + 8) + 120};
}

QWidget* MessageWindow::buildReplyRow() {
    auto* row = new QWidget(this);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    cmdPCn_ = new QComboBox(row);
    cmdPCn_->setObjectName(QStringLiteral("cmdPCn"));
    for (int pc = 1; pc <= console_.nofpc(); ++pc)
        cmdPCn_->addItem(QString::number(pc));
    txtrply_ = new QLineEdit(replyPrompt(), row);
    txtrply_->setObjectName(QStringLiteral("txtrply"));
    auto* cmdrep = new QPushButton(QStringLiteral("&Send"), row);
    cmdrep->setObjectName(QStringLiteral("cmdrep"));
    auto* pcLabel = new QLabel(QStringLiteral("Reply to &PC"), row);
    pcLabel->setBuddy(cmdPCn_);
    auto* textLabel = new QLabel(QStringLiteral("&Text"), row);
    textLabel->setBuddy(txtrply_);
    layout->addWidget(pcLabel);
    layout->addWidget(cmdPCn_);
    layout->addSpacing(8);
    layout->addWidget(textLabel);
    layout->addWidget(txtrply_, 1);
    layout->addWidget(cmdrep);
    connect(cmdrep, &QPushButton::clicked, this, &MessageWindow::reply);
    connect(txtrply_, &QLineEdit::returnPressed, this, &MessageWindow::reply);
    return row;
}

void MessageWindow::reply() {
    replyToPc(console_.sessionParts(), cmdPCn_->currentText(), txtrply_->text());
    txtrply_->setText(replyPrompt());
}
