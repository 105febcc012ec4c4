#include "ui/about_dialog.h"

#include "base/form_host.h"
#include "console/console.h"
#include "ui/accessibility.h"
#include "ui/dialog_frame.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSysInfo>

AboutDialog::AboutDialog(const QString& dataFolder, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmAbout"));
    setWindowTitle(QStringLiteral("What is Tarvo?"));

    auto* purpose =
        new QLabel(QStringLiteral("The operator's console of an internet café: it times "
                                  "and bills the sessions on the café's PCs."),
                   this);
    purpose->setWordWrap(true);
    auto* systemLabel = new QLabel(QStringLiteral("System information:"), this);
    auto* system = new QPlainTextEdit(systemInformation(dataFolder), this);
    system->setObjectName(QStringLiteral("txtSysInfo"));
    system->setReadOnly(true);
    system->setMinimumSize(420, 150);
    systemLabel->setBuddy(system);

    const DialogFrame frame =
        frameDialog(*this, QStringLiteral("Tarvo QRB"),
                    QStringLiteral("Version %1").arg(QStringLiteral(TARVO_VERSION)),
                    {{{}, purpose}, {{}, systemLabel}, {{}, system}},
                    {{"cmdOK", QStringLiteral("OK"), QDialogButtonBox::AcceptRole}});
    frame.heading->setObjectName(QStringLiteral("lblTitle"));
    frame.explanation->setObjectName(QStringLiteral("lblVersion"));
    connect(frame.button("cmdOK"), &QPushButton::clicked, this, &QDialog::accept);
    makeAccessible(this);
}

QString AboutDialog::systemInformation(const QString& dataFolder) {
    const QStringList lines = {
        QStringLiteral("Operating system: ") + QSysInfo::prettyProductName(),
        QStringLiteral("Kernel: ") + QSysInfo::kernelType() + QLatin1Char(' ') +
            QSysInfo::kernelVersion(),
        QStringLiteral("CPU architecture: ") + QSysInfo::currentCpuArchitecture(),
        QStringLiteral("Host name: ") + QSysInfo::machineHostName(),
        QStringLiteral("Qt version: ") + QString::fromLatin1(qVersion()),
        QStringLiteral("Data folder: ") + dataFolder,
    };
    return lines.join(QLatin1Char('\n'));
}

void openAbout(Console& console, FormHost& host) {
    auto* about = new AboutDialog(console.folder().path());
    about->setAttribute(Qt::WA_DeleteOnClose);
    host.showForm(about, true);
}
