#include "billing/promo_list_window.h"

#include "base/form_host.h"
#include "console/console.h"
#include "ui/accessibility.h"
#include "ui/dialog_frame.h"
#include "ui/record_grid.h"

#include <QPushButton>
#include <QTableView>

PromoListWindow::PromoListWindow(Console& console, QWidget* parent)
    : QDialog(parent), promos_(RecordTable::Kind::Promos, console.database(), console.prompts()) {
    setObjectName(QStringLiteral("frmlp"));
    setWindowTitle(QStringLiteral("Promo List"));
    setMinimumSize(560, 360);

    promos_.load();
    grid_ = makeRecordGrid(promos_, this);
    grid_->setObjectName(QStringLiteral("grdPromos"));
    grid_->setAccessibleName(QStringLiteral("Promos"));

    const DialogFrame frame =
        frameDialog(*this, QStringLiteral("Promos"),
                    QStringLiteral("A new promo is typed in the row marked *; its type is "
                                   "\"Per Hour\", \"Fix\" or \"None\". Promos typed or changed "
                                   "here are offered once the console is started again."),
                    {{{}, grid_}},
                    {{"cmddel", QStringLiteral("&Delete"), QDialogButtonBox::ActionRole},
                     {"cmdclose", QStringLiteral("&Close"), QDialogButtonBox::RejectRole}},
                    EnterKey::FieldsOnly);
    connect(frame.button("cmddel"), &QPushButton::clicked, this,
            [this] { promos_.deleteRecord(grid_->currentIndex().row()); });
    connect(frame.button("cmdclose"), &QPushButton::clicked, this, &QDialog::reject);
    makeAccessible(this);
}

void openPromoList(Console& console, FormHost& host) {
    auto* window = new PromoListWindow(console);
    window->setAttribute(Qt::WA_DeleteOnClose);
    host.showForm(window, true);
}
