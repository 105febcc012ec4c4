#include "ui/record_grid.h"

#include "billing/record_table.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QStyledItemDelegate>
#include <QTableView>

namespace {

// Asks the table about every key typed into a cell's editor.
class TypedKeysDelegate final : public QStyledItemDelegate {
public:
    TypedKeysDelegate(const RecordTable& table, QObject* parent)
        : QStyledItemDelegate(parent), table_(table) {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override {
        QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
        if (editor && table_.isNumeric(index.column())) {
            editor->setProperty("tarvoColumn", index.column());
            editor->installEventFilter(const_cast<TypedKeysDelegate*>(this));
        }
        return editor;
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::KeyPress) {
            const int column = watched->property("tarvoColumn").toInt();
            if (!table_.acceptsTyped(column, static_cast<QKeyEvent*>(event)->text()))
                return true;
        }
        return QStyledItemDelegate::eventFilter(watched, event);
    }

private:
    const RecordTable& table_;
};

} // namespace

QTableView* makeRecordGrid(RecordTable& table, QWidget* parent) {
    auto* grid = new QTableView(parent);
    grid->setModel(&table);
    grid->setItemDelegate(new TypedKeysDelegate(table, grid));
    grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid->setSelectionMode(QAbstractItemView::SingleSelection);
    grid->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                          QAbstractItemView::AnyKeyPressed);
    grid->horizontalHeader()->setStretchLastSection(true);
    grid->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    return grid;
}
