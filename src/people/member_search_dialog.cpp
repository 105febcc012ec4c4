#include "people/member_search_dialog.h"

#include "base/form_host.h"
#include "console/console.h"
#include "people/member_search.h"
#include "people/members_window.h"
#include "ui/accessibility.h"
#include "ui/dialog_frame.h"

#include <QButtonGroup>
#include <QDialog>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>

namespace {

using Pass = std::function<void(const QString& id, const QString& name)>;

// Gsearch: a search box whose grid follows every key, by id or by name, and the button
// that hands the chosen member to the log-on dialog.
class MemberSearchDialog final : public QDialog {
public:
    MemberSearchDialog(Console& console, Pass pass)
        : search_(console.database(), console.prompts()), pass_(std::move(pass)) {
        setObjectName(QStringLiteral("Gsearch"));
        setWindowTitle(QStringLiteral("Find a Member"));

        txtskey_ = new QLineEdit(this);
        txtskey_->setObjectName(QStringLiteral("txtskey"));
        txtskey_->setClearButtonEnabled(true);

        auto* options = new QWidget(this);
        auto* row = new QHBoxLayout(options);
        row->setContentsMargins(0, 0, 0, 0);
        optwhat_ = new QButtonGroup(this);
        const QString captions[] = {QStringLiteral("by &ID"),
                                    QStringLiteral("by &name (last name, then first)")};
        for (int i = 0; i < 2; ++i) {
            auto* option = new QRadioButton(captions[i], options);
            option->setObjectName(QStringLiteral("optwhat"));
            option->setProperty("index", i);
            optwhat_->addButton(option, i);
            row->addWidget(option);
        }
        row->addStretch(1);
        optwhat_->button(0)->setChecked(true);

        grid_ = makeMembersGrid(search_.list(), this);
        grid_->setAccessibleName(QStringLiteral("Members found"));
        grid_->setMinimumHeight(280);

        const DialogFrame frame = frameDialog(
            *this, QStringLiteral("Find a member"),
            QStringLiteral("The list follows what you type. Choose the member and press Pass "
                           "Member, or double-click the row."),
            {{QStringLiteral("&Search"), txtskey_}, {QString(), options}, {QString(), grid_}},
            {{"cmdpassd", QStringLiteral("&Pass Member"), QDialogButtonBox::AcceptRole},
             {"cmdclose", QStringLiteral("Close"), QDialogButtonBox::RejectRole}},
            EnterKey::FieldsOnly);

        connect(txtskey_, &QLineEdit::textEdited, this, [this](const QString& text) {
            search_.typed(text);
            selectFirst();
        });
        connect(txtskey_, &QLineEdit::returnPressed, this, [this] {
            search_.enter();
            selectFirst();
        });
        connect(optwhat_, &QButtonGroup::idClicked, this, [this](int id) {
            search_.setBy(MemberSearch::By(id));
            selectFirst();
        });
        connect(grid_, &QTableView::doubleClicked, this, [this] { passClicked(); });
        connect(frame.button("cmdpassd"), &QPushButton::clicked, this,
                &MemberSearchDialog::passClicked);
        connect(frame.button("cmdclose"), &QPushButton::clicked, this, &QDialog::reject);

        search_.open();
        selectFirst();
        txtskey_->setFocus();
        makeAccessible(this);
    }

private:
    void selectFirst() {
        const QModelIndex first = search_.list().index(0, 0);
        if (first.isValid())
            grid_->selectionModel()->setCurrentIndex(first, QItemSelectionModel::ClearAndSelect |
                                                                QItemSelectionModel::Rows);
    }

    void passClicked() {
        const auto member = search_.passed(grid_->currentIndex().row());
        if (!member) {
            search_.enter(); // tells that nothing was found
            return;
        }
        pass_(member->first, member->second);
        accept();
    }

    MemberSearch search_;
    Pass pass_;
    QLineEdit* txtskey_ = nullptr;
    QButtonGroup* optwhat_ = nullptr;
    QTableView* grid_ = nullptr;
};

} // namespace

void openMemberSearch(Console& console, FormHost& host, Pass pass) {
    auto* dialog = new MemberSearchDialog(console, std::move(pass));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    host.showForm(dialog, true);
}
