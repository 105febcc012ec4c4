#include "people/log_on_dialog.h"

#include "console/console.h"

void openLogOnDialog(Console& console, FormHost&, const LogOnRequest&) {
    console.prompts().message(QStringLiteral("The log-on dialog is not available yet in this "
                                             "version."),
                              QString(), Prompts::Icon::Information);
}
