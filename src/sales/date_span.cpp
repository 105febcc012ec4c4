#include "sales/date_span.h"

DateCondition dateCondition(const DateSpan& span, const QDate& today) {
    switch (span.mode) {
    case DateSpan::Mode::Today:
        return {QStringLiteral(" AND Rdate = ?"), {today}};
    case DateSpan::Mode::Range:
        return {QStringLiteral(" AND Rdate >= ? AND Rdate <= ?"), {span.begin, span.end}};
    case DateSpan::Mode::All:
        break;
    }
    return {};
}
