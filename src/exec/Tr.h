#pragma once

#include <QCoreApplication>

// Every text the user sees is looked up with its English wording as the key.
inline QString kkTr(const char *english) {
    return QCoreApplication::translate("KextKeeper", english);
}
