#include "people/ip_table_window.h"

#include "base/form_host.h"
#include "console/console.h"
#include "people/monitoring.h"

#include <QApplication>
#include <QFontMetrics>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTableView>
#include <QTreeWidget>
#include <QVBoxLayout>

IpTableWindow::IpTableWindow(Console& console, QWidget* parent)
    : QWidget(parent), console_(console) {
    setObjectName(QStringLiteral("ciptbl"));
    setWindowTitle(QStringLiteral("Terminal Attachment Information"));

    data1_ = new QStandardItemModel(0, int(registryHeadings().size()), this);
    data1_->setObjectName(QStringLiteral("Data1"));
    data1_->setHorizontalHeaderLabels(registryHeadings());
    dbGrid1_ = new QTableView(this);
    dbGrid1_->setObjectName(QStringLiteral("DBGrid1"));
    dbGrid1_->setAccessibleName(QStringLiteral("Registry table"));
    dbGrid1_->setModel(data1_);
    dbGrid1_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    dbGrid1_->setSelectionBehavior(QAbstractItemView::SelectRows);
    dbGrid1_->verticalHeader()->hide();
    dbGrid1_->horizontalHeader()->setStretchLastSection(true);
    dbGrid1_->verticalHeader()->setDefaultSectionSize(dbGrid1_->fontMetrics().height() + 6);

    lstips_ = new QTreeWidget(this);
    lstips_->setObjectName(QStringLiteral("lstips"));
    lstips_->setAccessibleName(QStringLiteral("Terminal addresses"));
    lstips_->setRootIsDecorated(false);
    lstips_->setUniformRowHeights(true);
    lstips_->setHeaderLabels({QStringLiteral("Address"), QStringLiteral("PC"),
                              QStringLiteral("Connection"), QStringLiteral("On line")});

    auto* grid = new QGroupBox(QStringLiteral("The table"), this);
    grid->setObjectName(QStringLiteral("fraGrid"));
    (new QVBoxLayout(grid))->addWidget(dbGrid1_);
    auto* list = new QGroupBox(QStringLiteral("Addresses"), this);
    list->setObjectName(QStringLiteral("fraList"));
    (new QVBoxLayout(list))->addWidget(lstips_);

    auto* cmdRef = new QPushButton(QStringLiteral("&Refresh"), this);
    cmdRef->setObjectName(QStringLiteral("cmdRef"));
    connect(cmdRef, &QPushButton::clicked, this, &IpTableWindow::refresh);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdRef);

    auto* layout = new QVBoxLayout(this);
    auto* both = new QHBoxLayout;
    both->addWidget(grid, 1);
    both->addWidget(list, 1);
    layout->addLayout(both, 1);
    layout->addLayout(buttons);
    refresh();
}

void IpTableWindow::refresh() {
    dbGrid1_->setColumnWidth(0, AddressTwips * logicalDpiX() / 1440);
    std::vector<TerminalRegistry::Row> rows;
    try {
        rows = console_.registry().rows();
    } catch (const StoreError& e) {
        console_.prompts().message(e.text(), QStringLiteral("Database error"),
                                   Prompts::Icon::Critical);
        return;
    }
    data1_->removeRows(0, data1_->rowCount());
    lstips_->clear();
    for (const TerminalRegistry::Row& row : rows) {
        const QStringList texts = registryRowTexts(row);
        QList<QStandardItem*> cells;
        for (const QString& text : texts)
            cells << new QStandardItem(text);
        data1_->appendRow(cells);
        lstips_->addTopLevelItem(new QTreeWidgetItem(texts));
    }
    for (int column = 1; column < lstips_->columnCount(); ++column) {
        lstips_->resizeColumnToContents(column);
        dbGrid1_->resizeColumnToContents(column);
    }
    lstips_->setColumnWidth(0, AddressTwips * logicalDpiX() / 1440);
}

QSize IpTableWindow::sizeHint() const {
    // Both views side by side, each wide enough for its four columns, a dozen rows high.
    const QFontMetrics metrics = fontMetrics();
    return {metrics.horizontalAdvance(QLatin1Char('x')) * 96 + 64, metrics.lineSpacing() * 16 + 96};
}

void openIpTable(Console& console, FormHost& host) {
    for (QWidget* w : QApplication::allWidgets())
        if (auto* open = qobject_cast<IpTableWindow*>(w); open && &open->console() == &console) {
            host.showForm(open, false);
            return;
        }
    host.showForm(new IpTableWindow(console), false);
}
