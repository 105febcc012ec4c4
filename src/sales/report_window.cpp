#include "sales/report_window.h"

#include "console/console.h"

void openReport(Console& console, FormHost&, const ReportRequest&) {
    console.prompts().message(QStringLiteral("The printed reports are not available yet in this "
                                             "version."),
                              QString(), Prompts::Icon::Information);
}

void printMemberListText(Console& console, FormHost&) {
    console.prompts().message(QStringLiteral("The printed members list is not available yet in "
                                             "this version."),
                              QString(), Prompts::Icon::Information);
}
