#pragma once

#include <QString>
#include <QStringList>

// Reading the kext status tool's listing. Its header names the columns; the one that
// matters starts at "Name (Version)" and holds "bundle.id (version)", optionally followed
// by " <" and the indexes the kext links against. Every line of the listing, the last
// included, ends with a line feed, so splitting at "\n" leaves an empty last piece that is
// never read: an output without its final newline loses its last kext on purpose.

// Where the name column begins in the header line. A header without it (a tool we do
// not know) gives 0, so each row shows its whole line instead of failing.
qsizetype kextStatNameColumn(const QString &header);

// The line from the name column on, cut before the first " <". A line shorter than the
// column gives the empty text.
QString kextRowText(const QString &line, qsizetype nameColumn);

// The row texts of a whole listing: lines 1 up to, not including, the last.
QStringList kextStatRows(const QString &output);

// The bundle identifier of a row: its text before the first " (".
QString kextRowIdentifier(const QString &row);

// Splits a row into identifier and version ("com.x.y (1.2)" -> "com.x.y", "1.2"). Without
// " (" the identifier is the whole row and the version is empty.
struct KextRowParts {
    QString identifier;
    QString version;
};
KextRowParts kextRowParts(const QString &row);
