#include "people/member_search_dialog.h"

#include "console/console.h"

void openMemberSearch(Console& console, FormHost&,
                      std::function<void(const QString&, const QString&)>) {
    console.prompts().message(QStringLiteral("The member search is not available yet in this "
                                             "version."),
                              QString(), Prompts::Icon::Information);
}
