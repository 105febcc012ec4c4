#include "client_widgets.h"

#include <QFont>
#include <QLabel>

namespace ClientWidgets {

QLabel* label(const QString& objectName, const QString& text, QWidget* parent) {
    auto* l = new QLabel(text, parent);
    l->setObjectName(objectName);
    l->setAccessibleDescription(objectName);
    return l;
}

void setPixelSize(QWidget* widget, int pixels, bool bold) {
    QFont font = widget->font();
    font.setPixelSize(qMax(8, pixels));
    font.setBold(bold);
    widget->setFont(font);
}

} // namespace ClientWidgets
