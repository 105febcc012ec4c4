#include "ui/accessibility.h"

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QAction>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QToolButton>

namespace {

// The menu or menu bar that shows `action`, if any.
QWidget* menuOf(QAction* action) {
    for (QObject* o : action->associatedObjects())
        if (qobject_cast<QMenu*>(o) || qobject_cast<QMenuBar*>(o))
            return static_cast<QWidget*>(o);
    return nullptr;
}

// A menu item as assistive technology sees it. Qt's own menu item has no description,
// so automation could not tell two items with the same caption apart (the frame has
// "Client PC Maintenance" twice).
class MenuItemAccessible final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    explicit MenuItemAccessible(QAction* action) : action_(action) {}

    bool isValid() const override { return action_ && menuOf(action_); }
    QObject* object() const override { return action_; }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(menuOf(action_));
    }
    QAccessibleInterface* child(int index) const override {
        QMenu* submenu = action_->menu();
        return index == 0 && submenu ? QAccessible::queryAccessibleInterface(submenu) : nullptr;
    }
    int childCount() const override { return action_->menu() ? 1 : 0; }
    int indexOfChild(const QAccessibleInterface* child) const override {
        return child && action_->menu() && child->object() == action_->menu() ? 0 : -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        QAccessibleInterface* submenu = child(0);
        return submenu && submenu->rect().contains(x, y) ? submenu : nullptr;
    }

    QString text(QAccessible::Text t) const override {
        switch (t) {
        case QAccessible::Name:
            return spokenCaption(action_->text());
        case QAccessible::Description:
            if (action_->objectName().isEmpty() && action_->menu())
                return action_->menu()->objectName();
            return action_->objectName();
        case QAccessible::Accelerator:
            if (!action_->shortcut().isEmpty())
                return action_->shortcut().toString(QKeySequence::NativeText);
            return QKeySequence::mnemonic(action_->text()).toString(QKeySequence::NativeText);
        default:
            return QString();
        }
    }
    void setText(QAccessible::Text, const QString&) override {}

    QRect rect() const override {
        QWidget* owner = menuOf(action_);
        QRect r;
        if (auto* menu = qobject_cast<QMenu*>(owner))
            r = menu->actionGeometry(action_);
        else if (auto* bar = qobject_cast<QMenuBar*>(owner))
            r = bar->actionGeometry(action_);
        return owner ? r.translated(owner->mapToGlobal(QPoint(0, 0))) : r;
    }
    QAccessible::Role role() const override {
        return action_->isSeparator() ? QAccessible::Separator : QAccessible::MenuItem;
    }
    QAccessible::State state() const override {
        QAccessible::State s;
        QWidget* owner = menuOf(action_);
        s.invisible = !owner || !owner->isVisible() || !action_->isVisible();
        s.disabled = action_->isSeparator() || !action_->isEnabled();
        s.checkable = action_->isCheckable();
        s.checked = action_->isChecked();
        if (auto* menu = qobject_cast<QMenu*>(owner))
            s.focused = menu->activeAction() == action_;
        else if (auto* bar = qobject_cast<QMenuBar*>(owner))
            s.focused = bar->activeAction() == action_;
        s.hasPopup = action_->menu() != nullptr;
        return s;
    }
    void* interface_cast(QAccessible::InterfaceType t) override {
        return t == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                 : nullptr;
    }

    QStringList actionNames() const override {
        if (action_->isSeparator())
            return {};
        return {action_->menu() ? showMenuAction() : pressAction()};
    }
    void doAction(const QString& name) override {
        if (!action_->isEnabled())
            return;
        if (name == pressAction()) {
            action_->trigger();
        } else if (name == showMenuAction()) {
            if (auto* menu = qobject_cast<QMenu*>(menuOf(action_)))
                menu->setActiveAction(action_);
            else if (auto* bar = qobject_cast<QMenuBar*>(menuOf(action_)))
                bar->setActiveAction(action_);
        }
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    QPointer<QAction> action_;
};

QAccessibleInterface* menuItemFactory(const QString& className, QObject* object) {
    auto* action = qobject_cast<QAction*>(object);
    if (!action || className != QLatin1String("QAction"))
        return nullptr;
    return new MenuItemAccessible(action);
}

QString nameQtFinds(QWidget* w) {
    QAccessibleInterface* face = QAccessible::queryAccessibleInterface(w);
    return face ? face->text(QAccessible::Name) : QString();
}

// What names a control that has neither a caption nor a buddy label.
QString shownName(QWidget* w) {
    if (auto* menu = qobject_cast<QMenu*>(w))
        return spokenCaption(menu->title());
    if (auto* button = qobject_cast<QToolButton*>(w); button && button->defaultAction())
        return spokenCaption(button->defaultAction()->text());
    return spokenCaption(w->toolTip());
}

// Qt's own parts of a window come without names: the buttons that show what does not
// fit in a menu bar or toolbar, and a child window's system menu.
void nameQtParts(QWidget* w) {
    if (auto* bar = qobject_cast<QMenuBar*>(w)) {
        auto* more = bar->findChild<QToolButton*>(QStringLiteral("qt_menubar_ext_button"),
                                                  Qt::FindDirectChildrenOnly);
        if (!more)
            return;
        more->setAccessibleName(QStringLiteral("More menus"));
        // The menu bar fills the button's menu when it needs it, and keeps a menu it finds
        // there: made here, it can be named.
        if (!more->menu()) {
            auto* menu = new QMenu(bar);
            menu->setObjectName(QStringLiteral("mnuMore"));
            menu->setAccessibleName(QStringLiteral("More menus"));
            more->setMenu(menu);
        }
    } else if (w->objectName() == QLatin1String("qt_toolbar_ext_button")) {
        w->setAccessibleName(QStringLiteral("More buttons"));
    } else if (auto* sub = qobject_cast<QMdiSubWindow*>(w); sub && sub->systemMenu()) {
        QMenu* menu = sub->systemMenu();
        menu->setObjectName(QStringLiteral("mnuSubWindow"));
        menu->setAccessibleName(QStringLiteral("Window menu"));
        // "Stay on &Top" becomes "mnuSubStayOnTop".
        for (QAction* a : menu->actions()) {
            if (a->isSeparator() || !a->objectName().isEmpty())
                continue;
            QString name = QStringLiteral("mnuSub");
            for (const QString& word : spokenCaption(a->text()).split(QLatin1Char(' ')))
                name += word.left(1).toUpper() + word.mid(1);
            a->setObjectName(name);
        }
    }
}

} // namespace

QString spokenCaption(const QString& caption) {
    QString out;
    out.reserve(caption.size());
    for (qsizetype i = 0; i < caption.size(); ++i) {
        if (caption[i] != QLatin1Char('&'))
            out += caption[i];
        else if (i + 1 < caption.size() && caption[i + 1] == QLatin1Char('&'))
            out += caption[++i]; // "&&" shows one "&"
    }
    return out.trimmed();
}

void makeAccessible(QWidget* window) {
    static const bool menuItemsDescribed = [] {
        QAccessible::installFactory(menuItemFactory);
        return true;
    }();
    Q_UNUSED(menuItemsDescribed);

    QList<QWidget*> widgets = window->findChildren<QWidget*>();
    widgets.prepend(window);
    for (QWidget* w : widgets)
        nameQtParts(w);
    widgets = window->findChildren<QWidget*>(); // with the parts made by nameQtParts
    widgets.prepend(window);
    for (QWidget* w : widgets) {
        if (!w->objectName().isEmpty())
            w->setAccessibleDescription(w->objectName());
        if (w->accessibleName().isEmpty() && nameQtFinds(w).isEmpty())
            w->setAccessibleName(shownName(w));
    }
}
