#include "ui/pictures.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>
#include <functional>

namespace {
// --- The background pictures -----------------------------------------------------------

void PaintDusk(QPainter& p, const QRectF& r) {
    QLinearGradient sky(r.topLeft(), r.bottomLeft());
    sky.setColorAt(0, QColor(18, 24, 54));
    sky.setColorAt(0.65, QColor(38, 70, 110));
    sky.setColorAt(1, QColor(196, 120, 90));
    p.fillRect(r, sky);
    QRadialGradient sun(QPointF(r.width() * 0.72, r.height() * 0.92), r.height() * 0.35);
    sun.setColorAt(0, QColor(255, 200, 140, 170));
    sun.setColorAt(1, QColor(255, 200, 140, 0));
    p.fillRect(r, sun);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 255, 255, 150));
    for (int i = 0; i < 60; ++i) {
        // A fixed scatter (golden-ratio steps), so the sky is the same at every drawing.
        const double x = std::fmod(i * 0.6180339887, 1.0) * r.width();
        const double y = std::fmod(i * 0.7548776662, 1.0) * 0.55 * r.height();
        p.drawEllipse(QPointF(x, y), 1.2, 1.2);
    }
}

void PaintDawn(QPainter& p, const QRectF& r) {
    QLinearGradient sky(r.topLeft(), r.bottomLeft());
    sky.setColorAt(0, QColor(120, 150, 200));
    sky.setColorAt(0.6, QColor(236, 190, 170));
    sky.setColorAt(1, QColor(250, 226, 190));
    p.fillRect(r, sky);
    // Layered hills.
    const QColor hills[] = {QColor(110, 120, 150, 200), QColor(80, 95, 120, 220),
                            QColor(55, 68, 92, 240)};
    for (int layer = 0; layer < 3; ++layer) {
        QPainterPath path;
        const double base = r.height() * (0.68 + 0.1 * layer);
        path.moveTo(0, r.height());
        path.lineTo(0, base);
        for (int x = 0; x <= int(r.width()); x += 8)
            path.lineTo(x, base - std::sin(x / (90.0 + 40 * layer) + layer) * 22.0);
        path.lineTo(r.width(), r.height());
        p.fillPath(path, hills[layer]);
    }
}

void PaintGrid(QPainter& p, const QRectF& r) {
    p.fillRect(r, QColor(28, 34, 40));
    QRadialGradient glow(r.center(), std::max(r.width(), r.height()) * 0.6);
    glow.setColorAt(0, QColor(40, 110, 120, 160));
    glow.setColorAt(1, QColor(40, 110, 120, 0));
    p.fillRect(r, glow);
    p.setPen(QPen(QColor(255, 255, 255, 18), 1));
    for (int x = 0; x < int(r.width()); x += 32)
        p.drawLine(QPointF(x, 0), QPointF(x, r.height()));
    for (int y = 0; y < int(r.height()); y += 32)
        p.drawLine(QPointF(0, y), QPointF(r.width(), y));
}

void PaintWaves(QPainter& p, const QRectF& r) {
    QLinearGradient sea(r.topLeft(), r.bottomLeft());
    sea.setColorAt(0, QColor(10, 60, 90));
    sea.setColorAt(1, QColor(4, 28, 48));
    p.fillRect(r, sea);
    for (int band = 0; band < 7; ++band) {
        QPainterPath path;
        const double base = r.height() * (0.2 + band * 0.12);
        path.moveTo(0, base);
        for (int x = 0; x <= int(r.width()); x += 6)
            path.lineTo(x, base + std::sin(x / 70.0 + band * 0.9) * 14.0);
        p.setPen(QPen(QColor(120, 200, 220, 30 + band * 8), 2));
        p.drawPath(path);
    }
}

QPixmap paintPicture(int index, QSize size) {
    QPixmap pix(size.expandedTo(QSize(1, 1)));
    QPainter p(&pix);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF r(QPointF(0, 0), QSizeF(pix.size()));
    switch (index) {
    case 0:
        PaintDusk(p, r);
        break;
    case 1:
        PaintDawn(p, r);
        break;
    case 2:
        PaintGrid(p, r);
        break;
    default:
        PaintWaves(p, r);
        break;
    }
    QFont f = p.font();
    f.setPointSize(28);
    f.setBold(true);
    p.setFont(f);
    p.setPen(QColor(255, 255, 255, 40));
    p.drawText(r.adjusted(0, 0, -24, -16), Qt::AlignRight | Qt::AlignBottom,
               QStringLiteral("Tarvo QRB"));
    return pix;
}

// --- Icons -----------------------------------------------------------------------------

QIcon DrawIcon(const std::function<void(QPainter&)>& draw) {
    QPixmap pix(32, 32);
    pix.fill(Qt::transparent);
    QPainter p(&pix);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(QColor(40, 50, 70), 2));
    draw(p);
    return QIcon(pix);
}

void DrawPerson(QPainter& p, double x, double y, const QColor& c) {
    p.setBrush(c);
    p.drawEllipse(QPointF(x, y), 5, 5);
    p.drawChord(QRectF(x - 9, y + 6, 18, 18), 0, 180 * 16);
}

void DrawMonitor(QPainter& p) {
    p.setBrush(QColor(120, 170, 220));
    p.drawRoundedRect(QRectF(4, 5, 24, 17), 2, 2);
    p.drawLine(QPointF(16, 22), QPointF(16, 26));
    p.drawLine(QPointF(10, 27), QPointF(22, 27));
}

QIcon toolIcon(int index) {
    switch (index) {
    case 1: // terminal listing
        return DrawIcon([](QPainter& p) {
            for (int i = 0; i < 4; ++i) {
                p.setBrush(QColor(90, 160, 90));
                p.drawEllipse(QPointF(7, 7 + i * 6.5), 2, 2);
                p.drawLine(QPointF(12, 7 + i * 6.5), QPointF(28, 7 + i * 6.5));
            }
        });
    case 2: // log-on
        return DrawIcon([](QPainter& p) {
            DrawPerson(p, 12, 9, QColor(230, 180, 90));
            p.setPen(QPen(QColor(40, 140, 60), 3));
            p.drawLine(QPointF(24, 16), QPointF(24, 28));
            p.drawLine(QPointF(18, 22), QPointF(30, 22));
        });
    case 3: // active terminal view
        return DrawIcon([](QPainter& p) {
            DrawMonitor(p);
            p.setBrush(Qt::white);
            p.drawEllipse(QPointF(16, 13.5), 5, 5);
            p.drawLine(QPointF(16, 13.5), QPointF(16, 10));
            p.drawLine(QPointF(16, 13.5), QPointF(19, 13.5));
        });
    case 4: // rates
        return DrawIcon([](QPainter& p) {
            p.setBrush(QColor(240, 200, 60));
            p.drawEllipse(QPointF(16, 16), 12, 12);
            QFont f = p.font();
            f.setBold(true);
            f.setPixelSize(15);
            p.setFont(f);
            p.drawText(QRectF(4, 4, 24, 24), Qt::AlignCenter, QStringLiteral("P"));
        });
    case 5: // members
        return DrawIcon([](QPainter& p) {
            DrawPerson(p, 20, 9, QColor(120, 160, 220));
            DrawPerson(p, 11, 12, QColor(230, 180, 90));
        });
    case 6: // operator accounts
        return DrawIcon([](QPainter& p) {
            p.setBrush(QColor(230, 190, 70));
            p.drawEllipse(QPointF(10, 16), 6, 6);
            p.drawLine(QPointF(16, 16), QPointF(29, 16));
            p.drawLine(QPointF(25, 16), QPointF(25, 21));
            p.drawLine(QPointF(29, 16), QPointF(29, 21));
        });
    case 7: // today's sales
        return DrawIcon([](QPainter& p) {
            const int heights[] = {8, 14, 11, 20};
            for (int i = 0; i < 4; ++i) {
                p.setBrush(QColor(80, 150, 200));
                p.drawRect(QRectF(4 + i * 6.5, 28 - heights[i], 5, heights[i]));
            }
        });
    case 8: // printer
        return DrawIcon([](QPainter& p) {
            p.setBrush(Qt::white);
            p.drawRect(QRectF(9, 3, 14, 10));
            p.setBrush(QColor(150, 160, 175));
            p.drawRoundedRect(QRectF(3, 12, 26, 11), 2, 2);
            p.setBrush(Qt::white);
            p.drawRect(QRectF(9, 19, 14, 9));
        });
    case 9: // IP table
        return DrawIcon([](QPainter& p) {
            const QPointF hub(16, 16);
            const QPointF ends[] = {{5, 6}, {27, 6}, {5, 26}, {27, 26}};
            for (const QPointF& e : ends)
                p.drawLine(hub, e);
            p.setBrush(QColor(90, 170, 110));
            for (const QPointF& e : ends)
                p.drawEllipse(e, 3.5, 3.5);
            p.setBrush(QColor(70, 120, 200));
            p.drawEllipse(hub, 5, 5);
        });
    default: // close
        return DrawIcon([](QPainter& p) {
            p.setPen(QPen(QColor(190, 50, 50), 3));
            p.drawArc(QRectF(6, 6, 20, 20), 120 * 16, 300 * 16);
            p.drawLine(QPointF(16, 3), QPointF(16, 15));
        });
    }
}

QIcon paintStateIcon(TerminalState state, bool online) {
    using State = TerminalState;
    QColor c;
    switch (state) {
    case State::NotLogged:
        c = QColor(140, 140, 140);
        break;
    case State::Running:
        c = QColor(50, 170, 70);
        break;
    case State::Paused:
        c = QColor(235, 170, 30);
        break;
    case State::Free:
        c = QColor(60, 130, 220);
        break;
    case State::Billing:
        c = QColor(150, 80, 190);
        break;
    case State::Other:
        c = QColor(200, 50, 50);
        break;
    }
    QPixmap pix(16, 16);
    pix.fill(Qt::transparent);
    QPainter p(&pix);
    p.setRenderHint(QPainter::Antialiasing);
    // On line: a filled disc; off line: only its ring.
    p.setPen(QPen(c.darker(130), 2));
    p.setBrush(online ? QBrush(c) : QBrush(Qt::NoBrush));
    p.drawEllipse(QRectF(2, 2, 12, 12));
    return QIcon(pix);
}

} // namespace

namespace Pictures {
QIcon commandIcon(const QString& name) {
    static const QStringList names = {QStringLiteral("listing"),  QStringLiteral("logon"),
                                      QStringLiteral("board"),    QStringLiteral("rates"),
                                      QStringLiteral("members"),  QStringLiteral("accounts"),
                                      QStringLiteral("sales"),    QStringLiteral("printer"),
                                      QStringLiteral("registry"), QStringLiteral("close")};
    const qsizetype i = names.indexOf(name);
    return i < 0 ? QIcon() : toolIcon(int(i) + 1);
}

QIcon stateIcon(TerminalState state, bool online) {
    return paintStateIcon(state, online);
}

QPixmap background(int index, QSize size) {
    return paintPicture(index, size);
}
} // namespace Pictures
