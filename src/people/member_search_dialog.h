#pragma once

#include <QString>

#include <functional>

class Console;
class FormHost;

// The member search (Gsearch): search as you type by id or by last and first name; the
// member passed is handed to `pass` as (id, "LAST, FIRST MIDDLE").
void openMemberSearch(Console& console, FormHost& host,
                      std::function<void(const QString& id, const QString& name)> pass);
