#pragma once

#include <QString>

// The verbs accept only what the window would let a user choose on the same volume: an
// option whose check box (or menu item) the volume selection disables there is refused
// before anything runs. Each function gives the refusal's text, naming the volume and the
// folder it lacks, or an empty text when the option is offered.
namespace OfferedOptions {
// The S/L/E boxes: repairing S/L/E and disk permissions, rebuilding the system caches.
QString sle(const QString &option, const QString &volume, const QString &rp);
// The version menu's item of a version: shown only where Extra has that version's folder.
QString version(const QString &volume, const QString &rp, const QString &version);
// The Extra boxes and the Extra menu's show and hide items, in the Extra base folder of
// the version (empty: Extra itself).
QString extra(const QString &option, const QString &volume, const QString &rp,
              const QString &version);
} // namespace OfferedOptions
