#include "loaded/LoadedKextList.h"

#include "exec/Tr.h"
#include "loaded/KextStatText.h"

void LoadedKextList::refresh(const QString &kextstatOutput) {
    m_rows = kextStatRows(kextstatOutput);
}

QStringList LoadedKextList::filtered(const QString &text) const {
    if (text.isEmpty())
        return m_rows;
    QStringList shown;
    for (const QString &row : m_rows) {
        if (row.contains(text, Qt::CaseInsensitive))
            shown << row;
    }
    return shown;
}

QString LoadedKextList::foundText(qsizetype count) {
    return kkTr("Found: ") + QString::number(count);
}
