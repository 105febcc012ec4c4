#include "server/status_panels.h"

void StatusPanels::set(StatusPanel panel, const QString& text) {
    QString& held = texts_[size_t(panel)];
    if (held == text)
        return;
    held = text;
    Q_EMIT changed(panel, text);
}
