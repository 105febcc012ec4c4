#pragma once

#include <QObject>
#include <QString>

#include <array>

// The main window's status bar panels that the logic writes.
enum class StatusPanel {
    Sessions,     // terminals holding a session, "n PC"
    Sockets,      // sockets in the connection array
    Port,         // "(on)Port: " and the next connection slot
    LocalAddress, // the listening socket's local address
    LastRequest,  // "RQST CONN : " and the last terminal that asked to connect
    DateTime,     // "DDDD, MMMM DD YYYY HH:MM:SS "
};
constexpr int StatusPanelCount = 6;

class StatusPanels : public QObject {
    Q_OBJECT
public:
    void set(StatusPanel panel, const QString& text);
    QString text(StatusPanel panel) const { return texts_[size_t(panel)]; }

Q_SIGNALS:
    void changed(StatusPanel panel, const QString& text);

private:
    std::array<QString, StatusPanelCount> texts_;
};
