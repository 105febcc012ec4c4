#include "people/listing_window.h"

#include "base/form_host.h"
#include "base/text.h"
#include "console/console.h"
#include "people/monitoring.h"

#include <QApplication>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>

ListingWindow::ListingWindow(Console& console, int terminals, QWidget* parent)
    : QWidget(parent), console_(console) {
    setObjectName(QStringLiteral("frmTabList"));
    setWindowTitle(QStringLiteral("Terminal Listing"));

    const TerminalTable& table = console.terminals();
    const QStringList& headings = listingHeadings();
    msFlxg_ = new QTableWidget(table.count(), int(headings.size()), this);
    msFlxg_->setObjectName(QStringLiteral("msFlxg"));
    msFlxg_->setAccessibleName(QStringLiteral("Terminals"));
    msFlxg_->setHorizontalHeaderLabels(headings);
    msFlxg_->verticalHeader()->hide();
    msFlxg_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    msFlxg_->setSelectionBehavior(QAbstractItemView::SelectRows);
    msFlxg_->setSelectionMode(QAbstractItemView::SingleSelection);
    msFlxg_->setAlternatingRowColors(true);
    msFlxg_->horizontalHeader()->setStretchLastSection(true);
    msFlxg_->verticalHeader()->setDefaultSectionSize(msFlxg_->fontMetrics().height() + 6);
    for (int row = 0; row < msFlxg_->rowCount(); ++row)
        for (int column = 0; column < msFlxg_->columnCount(); ++column) {
            auto* item = new QTableWidgetItem;
            // Numbers and times line up on the right, as they are read down a column.
            if (column == 0 || column == 3 || column == 4)
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            msFlxg_->setItem(row, column, item);
        }

    txtNpc_ = new QLineEdit(QString::number(terminals), this);
    txtNpc_->setObjectName(QStringLiteral("txtNpc"));
    txtNpc_->setReadOnly(true);
    txtinactpc_ = new QLineEdit(this);
    txtinactpc_->setObjectName(QStringLiteral("txtinactpc"));
    txtinactpc_->setReadOnly(true);
    for (QLineEdit* count : {txtNpc_, txtinactpc_}) {
        count->setAlignment(Qt::AlignRight);
        count->setMaximumWidth(count->fontMetrics().horizontalAdvance(QStringLiteral("00000")) +
                               16);
    }
    auto* counts = new QHBoxLayout;
    for (const auto& [caption, field] : {std::pair{QStringLiteral("&Terminals"), txtNpc_},
                                         {QStringLiteral("&On line"), txtinactpc_}}) {
        auto* label = new QLabel(caption, this);
        label->setBuddy(field);
        counts->addWidget(label);
        counts->addWidget(field);
        counts->addSpacing(12);
    }
    counts->addStretch(1);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(msFlxg_, 1);
    layout->addLayout(counts);

    for (int pc = 1; pc <= table.count(); ++pc)
        fillRow(pc);
    msFlxg_->selectRow(0);
    msFlxg_->resizeColumnsToContents();

    tabtmr_ = new QTimer(this);
    tabtmr_->setObjectName(QStringLiteral("Tabtmr"));
    tabtmr_->setInterval(TickMs);
    connect(tabtmr_, &QTimer::timeout, this, &ListingWindow::tick);
    tabtmr_->start();
}

void ListingWindow::fillRow(int pc) {
    const QStringList texts =
        listingRow(pc, console_.terminals().at(pc), console_.clock().tickCount());
    for (int column = 0; column < int(texts.size()); ++column)
        msFlxg_->item(pc - 1, column)->setText(texts[column]);
}

void ListingWindow::tick() {
    const QList<int> pcs = onlinePcs(console_.terminals(), int(leadingNumber(txtNpc_->text())));
    for (int pc : pcs)
        fillRow(pc);
    txtinactpc_->setText(QString::number(pcs.size()));
}

QSize ListingWindow::sizeHint() const {
    int width = 0;
    for (int column = 0; column < msFlxg_->columnCount(); ++column)
        width += msFlxg_->columnWidth(column);
    const int rows = qMin(msFlxg_->rowCount(), 24);
    return {width + 48, msFlxg_->horizontalHeader()->height() +
                            rows * msFlxg_->verticalHeader()->defaultSectionSize() + 80};
}

void openListing(Console& console, FormHost& host, int terminals) {
    for (QWidget* w : QApplication::allWidgets())
        if (auto* open = qobject_cast<ListingWindow*>(w); open && &open->console() == &console) {
            host.showForm(open, false);
            return;
        }
    host.showForm(new ListingWindow(console, terminals), false);
}
