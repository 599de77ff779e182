<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>ArchitectureMark</name>
    <message>
        <source>Has code for %1 (read-only)</source>
        <translation>Enthält Code für %1 (nur Anzeige)</translation>
    </message>
    <message>
        <source>No code for %1 (read-only)</source>
        <translation>Kein Code für %1 (nur Anzeige)</translation>
    </message>
</context>
<context>
    <name>BundlePicker</name>
    <message>
        <source>Enclosing Folder</source>
        <translation>Übergeordneter Ordner</translation>
    </message>
    <message>
        <source>Choose Bundles</source>
        <translation>Bundles auswählen</translation>
    </message>
    <message>
        <source>Choose a Bundle</source>
        <translation>Ein Bundle auswählen</translation>
    </message>
    <message>
        <source>Home Folder</source>
        <translation>Benutzerordner</translation>
    </message>
    <message>
        <source>&amp;Location:</source>
        <translation>&amp;Ort:</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Kind</source>
        <translation>Art</translation>
    </message>
    <message>
        <source>Folders ending in %1 are chosen; other folders open.</source>
        <translation>Ordner, deren Name auf %1 endet, werden ausgewählt; andere Ordner werden geöffnet.</translation>
    </message>
    <message>
        <source>%1 does not exist.</source>
        <translation>%1 existiert nicht.</translation>
    </message>
    <message>
        <source>%1 is not a bundle and can&apos;t be chosen. Choose folders whose names end in %2.</source>
        <translation>%1 ist kein Bundle und kann nicht ausgewählt werden. Wählen Sie Ordner, deren Name auf %2 endet.</translation>
    </message>
    <message>
        <source>%1 are not bundles and can&apos;t be chosen. Choose folders whose names end in %2.</source>
        <translation>%1 sind keine Bundles und können nicht ausgewählt werden. Wählen Sie Ordner, deren Name auf %2 endet.</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Kernel extension</source>
        <translation>Kernel-Erweiterung</translation>
    </message>
    <message>
        <source>Plug-in</source>
        <translation>Plug-in</translation>
    </message>
    <message>
        <source>PPP plug-in</source>
        <translation>PPP-Plug-in</translation>
    </message>
    <message>
        <source>Bundle</source>
        <translation>Bundle</translation>
    </message>
</context>
<context>
    <name>CheckController</name>
    <message>
        <source>Loaded %1.</source>
        <translation>%1 wurde geladen.</translation>
    </message>
</context>
<context>
    <name>CheckPage</name>
    <message>
        <source>&amp;Kext:</source>
        <translation>&amp;Kext:</translation>
    </message>
    <message>
        <source>Choose a kext or drop one on the window</source>
        <translation>Wählen Sie eine Kext oder ziehen Sie eine auf das Fenster</translation>
    </message>
    <message>
        <source>&amp;Choose…</source>
        <translation>&amp;Auswählen…</translation>
    </message>
    <message>
        <source>Architectures</source>
        <translation>Architekturen</translation>
    </message>
    <message>
        <source>x86_64</source>
        <translation>x86_64</translation>
    </message>
    <message>
        <source>i386</source>
        <translation>i386</translation>
    </message>
    <message>
        <source>ppc</source>
        <translation>ppc</translation>
    </message>
    <message>
        <source>ppc64</source>
        <translation>ppc64</translation>
    </message>
    <message>
        <source>Dependencies</source>
        <translation>Abhängigkeiten</translation>
    </message>
    <message>
        <source>&amp;List dependencies after each check</source>
        <translation>&amp;Abhängigkeiten nach jeder Prüfung auflisten</translation>
    </message>
    <message>
        <source>List &amp;Dependencies</source>
        <translation>&amp;Abhängigkeiten auflisten</translation>
    </message>
    <message>
        <source>&amp;Test Load</source>
        <translation>&amp;Probeweise laden</translation>
    </message>
</context>
<context>
    <name>ExtraMenuController</name>
    <message>
        <source>Continue?</source>
        <translation>Fortfahren?</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message>
        <source>Extra is now shown.</source>
        <translation>Extra wird jetzt angezeigt.</translation>
    </message>
    <message>
        <source>Extra is now hidden.</source>
        <translation>Extra ist jetzt ausgeblendet.</translation>
    </message>
</context>
<context>
    <name>FilePanels</name>
    <message>
        <source>Add Kexts</source>
        <translation>Kexts hinzufügen</translation>
    </message>
</context>
<context>
    <name>InstallController</name>
    <message>
        <source>Backups are in %1.</source>
        <translation>Die Sicherungen liegen in %1.</translation>
    </message>
    <message>
        <source>The kexts that were replaced are backed up in %1.</source>
        <translation>Die ersetzten Kexts sind in %1 gesichert.</translation>
    </message>
    <message>
        <source>Show Backups</source>
        <translation>Sicherungen zeigen</translation>
    </message>
</context>
<context>
    <name>InstallPage</name>
    <message>
        <source>Kexts to install</source>
        <translation>Zu installierende Kexts</translation>
    </message>
    <message>
        <source>&amp;Add…</source>
        <translation>&amp;Hinzufügen…</translation>
    </message>
    <message>
        <source>&amp;Remove</source>
        <translation>&amp;Entfernen</translation>
    </message>
    <message>
        <source>Removes the selected kexts, or all of them when none is selected</source>
        <translation>Entfernt die ausgewählten Kexts, oder alle, wenn keine ausgewählt ist</translation>
    </message>
    <message>
        <source>Destination</source>
        <translation>Ziel</translation>
    </message>
    <message>
        <source>&amp;Volume:</source>
        <translation>&amp;Volume:</translation>
    </message>
    <message>
        <source>Install into:</source>
        <translation>Installieren in:</translation>
    </message>
    <message>
        <source>E&amp;xtra folder (Extensions or KextStore)</source>
        <translation>&amp;Extra-Ordner (Extensions oder KextStore)</translation>
    </message>
    <message>
        <source>&amp;System/Library/Extensions</source>
        <translation>&amp;System/Library/Extensions</translation>
    </message>
    <message>
        <source>A new Extensions.mkext on the des&amp;ktop</source>
        <translation>&amp;Eine neue Extensions.mkext auf dem Schreibtisch</translation>
    </message>
    <message>
        <source>&amp;Back up kexts that will be replaced</source>
        <translation>&amp;Kexts sichern, die ersetzt werden</translation>
    </message>
    <message>
        <source>&amp;Install</source>
        <translation>&amp;Installieren</translation>
    </message>
</context>
<context>
    <name>JournalModel</name>
    <message>
        <source>failed: %1</source>
        <translation>fehlgeschlagen: %1</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Ergebnis</translation>
    </message>
    <message>
        <source>Took</source>
        <translation>Dauer</translation>
    </message>
    <message>
        <source>Command</source>
        <translation>Befehl</translation>
    </message>
</context>
<context>
    <name>KextKeeper</name>
    <message>
        <source>Sorry, try again.</source>
        <translation>Das war nicht richtig, bitte noch einmal.</translation>
    </message>
    <message>
        <source>Authenticate</source>
        <translation>Anmelden</translation>
    </message>
    <message>
        <source>KextKeeper needs administrator rights for this task and gets them through sudo. Type your own password: the one sudo asks you for, not root&apos;s.</source>
        <translation>KextKeeper braucht für diese Aufgabe Administratorrechte und erhält sie über sudo. Geben Sie Ihr eigenes Passwort ein: das, nach dem sudo Sie fragt, nicht das von root.</translation>
    </message>
    <message>
        <source>Your password:</source>
        <translation>Ihr Passwort:</translation>
    </message>
    <message>
        <source>sudo was not found: root tasks need it</source>
        <translation>sudo wurde nicht gefunden: Aufgaben als root brauchen es</translation>
    </message>
    <message>
        <source>sudo refused administrator rights.</source>
        <translation>sudo hat die Administratorrechte verweigert.</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>1 command failed, see the Log</source>
        <translation>1 Befehl ist fehlgeschlagen, siehe Protokoll</translation>
    </message>
    <message>
        <source>%1 commands failed, see the Log</source>
        <translation>%1 Befehle sind fehlgeschlagen, siehe Protokoll</translation>
    </message>
    <message>
        <source>You haven&apos;t selected any kext.</source>
        <translation>Sie haben keine Kext ausgewählt.</translation>
    </message>
    <message>
        <source>You haven&apos;t selected any mkext.</source>
        <translation>Sie haben kein Mkext ausgewählt.</translation>
    </message>
    <message>
        <source>Unpack directory doesn&apos;t exist.</source>
        <translation>Der Zielordner zum Entpacken existiert nicht.</translation>
    </message>
    <message>
        <source>Mkext was unpacked to selected directory.</source>
        <translation>Das Mkext wurde in den ausgewählten Ordner entpackt.</translation>
    </message>
    <message>
        <source>The mkext tool could not be run.</source>
        <translation>Das Mkext-Werkzeug konnte nicht gestartet werden.</translation>
    </message>
    <message>
        <source>%1 holds no note of where its kexts came from, so they cannot be put back automatically.</source>
        <translation>%1 enthält keinen Vermerk, woher seine Kexts stammen; sie können daher nicht automatisch zurückgelegt werden.</translation>
    </message>
    <message>
        <source>The volume %1 that the kexts came from is not there.</source>
        <translation>Das Volume %1, von dem die Kexts stammen, ist nicht vorhanden.</translation>
    </message>
    <message>
        <source>%1 came from %2, which is not on %3 any more.</source>
        <translation>%1 stammt aus %2, das nicht mehr auf %3 liegt.</translation>
    </message>
    <message>
        <source>%1 names no destination its kexts can go back to.</source>
        <translation>%1 nennt kein Ziel, in das seine Kexts zurückkehren können.</translation>
    </message>
    <message>
        <source>No selected kexts to install.</source>
        <translation>Keine Kexts zum Installieren ausgewählt.</translation>
    </message>
    <message>
        <source>Both Extra/Extensions and Extra/KextStore found.</source>
        <translation>Sowohl Extra/Extensions als auch Extra/KextStore gefunden.</translation>
    </message>
    <message>
        <source>No Extra/Extensions or Extra/KextStore found.</source>
        <translation>Weder Extra/Extensions noch Extra/KextStore gefunden.</translation>
    </message>
    <message>
        <source>No System/Library/Extensions on selected disk.</source>
        <translation>Kein System/Library/Extensions auf dem ausgewählten Volume.</translation>
    </message>
    <message>
        <source>%1 was left in place, and nothing more was installed: its backup in %2 could not be completed (%3).</source>
        <translation>%1 wurde an seinem Platz gelassen, und nichts weiter wurde installiert: seine Sicherung in %2 konnte nicht abgeschlossen werden (%3).</translation>
    </message>
    <message>
        <source>%1 could not be installed into %2 (%3).</source>
        <translation>%1 konnte nicht in %2 installiert werden (%3).</translation>
    </message>
    <message>
        <source>The previous copy was put back from %1.</source>
        <translation>Die vorherige Kopie wurde aus %1 zurückgelegt.</translation>
    </message>
    <message>
        <source>Putting back the previous copy failed too: %1 has no %2 now; the previous copy is in %3.</source>
        <translation>Auch das Zurücklegen der vorherigen Kopie ist fehlgeschlagen: %1 enthält jetzt kein %2; die vorherige Kopie liegt in %3.</translation>
    </message>
    <message>
        <source>The previous copy was removed before, and there is no backup of it: %1 has no %2 now.</source>
        <translation>Die vorherige Kopie wurde vorher entfernt, und es gibt keine Sicherung davon: %1 enthält jetzt kein %2.</translation>
    </message>
    <message>
        <source>The incomplete copy was removed.</source>
        <translation>Die unvollständige Kopie wurde entfernt.</translation>
    </message>
    <message>
        <source>Selected tasks were finished.</source>
        <translation>Die ausgewählten Aufgaben wurden erledigt.</translation>
    </message>
    <message>
        <source>Nothing was installed: %1</source>
        <translation>Nichts wurde installiert: %1</translation>
    </message>
    <message>
        <source>%1 has %2 free, and %3 need %4.</source>
        <translation>%1 hat %2 frei, und %3 brauchen %4.</translation>
    </message>
    <message>
        <source>%1 is no longer at %2 (it was moved or deleted after it was added).</source>
        <translation>%1 liegt nicht mehr in %2 (es wurde nach dem Hinzufügen verschoben oder gelöscht).</translation>
    </message>
    <message>
        <source>%1 cannot be read whole: %2 is not readable.</source>
        <translation>%1 kann nicht vollständig gelesen werden: %2 ist nicht lesbar.</translation>
    </message>
    <message>
        <source>%1 cannot be backed up: %2 is not readable.</source>
        <translation>%1 kann nicht gesichert werden: %2 ist nicht lesbar.</translation>
    </message>
    <message>
        <source>the backup folder %1 cannot be created.</source>
        <translation>der Sicherungsordner %1 kann nicht angelegt werden.</translation>
    </message>
    <message>
        <source>%1 is a link; kexts are not packed through it. Remove it and try again.</source>
        <translation>%1 ist ein Verweis; Kexts werden nicht durch ihn hindurch gepackt. Entfernen Sie ihn und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>%1 is in the way: kexts are packed there, and KextKeeper did not make it. Move it away and try again.</source>
        <translation>%1 ist im Weg: dort werden Kexts gepackt, und KextKeeper hat es nicht angelegt. Verschieben Sie es und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>%1 cannot be created.</source>
        <translation>%1 kann nicht angelegt werden.</translation>
    </message>
    <message>
        <source>Found: </source>
        <translation>Gefunden: </translation>
    </message>
    <message>
        <source>Saved.</source>
        <translation>Gespeichert.</translation>
    </message>
    <message>
        <source>No Extra/KextStore found.</source>
        <translation>Kein Extra/KextStore gefunden.</translation>
    </message>
    <message>
        <source>Do you want to bring back Extra/Extensions from Extra/KextStore on selected disk?</source>
        <translation>Möchten Sie Extra/Extensions aus Extra/KextStore auf dem ausgewählten Volume wiederherstellen?</translation>
    </message>
    <message>
        <source>No Extra/Extensions found.</source>
        <translation>Kein Extra/Extensions gefunden.</translation>
    </message>
    <message>
        <source>Do you want to create Extra/KextStore from Extra/Extensions on selected disk?</source>
        <translation>Möchten Sie Extra/KextStore aus Extra/Extensions auf dem ausgewählten Volume anlegen?</translation>
    </message>
    <message>
        <source>Mkext will be created, it can take a while.</source>
        <translation>Ein Mkext wird erstellt, das kann eine Weile dauern.</translation>
    </message>
    <message>
        <source>No Extra folder on selected disk.</source>
        <translation>Kein Extra-Ordner auf dem ausgewählten Volume.</translation>
    </message>
    <message>
        <source>You haven&apos;t selected any options.</source>
        <translation>Sie haben keine Optionen ausgewählt.</translation>
    </message>
    <message>
        <source>Repairing Extra permissions...</source>
        <translation>Rechte von Extra werden repariert...</translation>
    </message>
    <message>
        <source>Rebuilding Extra mkext...</source>
        <translation>Mkext von Extra wird neu erstellt...</translation>
    </message>
    <message>
        <source>Repairing S/L/E permissions...</source>
        <translation>Rechte von S/L/E werden repariert...</translation>
    </message>
    <message>
        <source>Repairing disk permissions...</source>
        <translation>Rechte des Volumes werden repariert...</translation>
    </message>
    <message>
        <source>Rebuilding system cache...</source>
        <translation>System-Cache wird neu erstellt...</translation>
    </message>
    <message>
        <source>Architecture x86_64 not found in mkext.</source>
        <translation>Architektur x86_64 nicht im Mkext gefunden.</translation>
    </message>
    <message>
        <source>Architecture i386 not found in mkext.</source>
        <translation>Architektur i386 nicht im Mkext gefunden.</translation>
    </message>
    <message>
        <source>Architecture ppc not found in mkext.</source>
        <translation>Architektur ppc nicht im Mkext gefunden.</translation>
    </message>
    <message>
        <source>Architecture ppc64 not found in mkext.</source>
        <translation>Architektur ppc64 nicht im Mkext gefunden.</translation>
    </message>
</context>
<context>
    <name>LoadedPage</name>
    <message>
        <source>Fil&amp;ter:</source>
        <translation>&amp;Filter:</translation>
    </message>
    <message>
        <source>Part of a bundle identifier</source>
        <translation>Teil einer Bundle-Kennung</translation>
    </message>
    <message>
        <source>Found: 0</source>
        <translation>Gefunden: 0</translation>
    </message>
    <message>
        <source>Kext:</source>
        <translation>Kext:</translation>
    </message>
    <message>
        <source>&amp;Path:</source>
        <translation>&amp;Pfad:</translation>
    </message>
    <message>
        <source>Code:</source>
        <translation>Code:</translation>
    </message>
    <message>
        <source>x86_64</source>
        <translation>x86_64</translation>
    </message>
    <message>
        <source>i386</source>
        <translation>i386</translation>
    </message>
    <message>
        <source>Show or hide the details</source>
        <translation>Details ein- oder ausblenden</translation>
    </message>
    <message>
        <source>Re&amp;veal</source>
        <translation>&amp;Zeigen</translation>
    </message>
    <message>
        <source>&amp;Reload</source>
        <translation>&amp;Neu laden</translation>
    </message>
    <message>
        <source>&amp;Unload</source>
        <translation>&amp;Entladen</translation>
    </message>
    <message>
        <source>Details</source>
        <translation>Details</translation>
    </message>
    <message>
        <source>The details are hidden</source>
        <translation>Die Details sind ausgeblendet</translation>
    </message>
    <message>
        <source>The details are shown</source>
        <translation>Die Details werden angezeigt</translation>
    </message>
</context>
<context>
    <name>LoadedPageController</name>
    <message>
        <source>Unknown kext</source>
        <translation>Unbekannte Kext</translation>
    </message>
    <message>
        <source>kextstat is not available on this system.</source>
        <translation>kextstat ist auf diesem System nicht vorhanden.</translation>
    </message>
</context>
<context>
    <name>LogWindow</name>
    <message>
        <source>Log</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>Dry run: these commands would run as root. None of them was run.</source>
        <translation>Probelauf: Diese Befehle würden als root laufen. Keiner von ihnen wurde ausgeführt.</translation>
    </message>
    <message>
        <source>The commands this run of KextKeeper ran as root. Failures are red; the journal keeps every run&apos;s.</source>
        <translation>Die Befehle, die dieser Lauf von KextKeeper als root ausgeführt hat. Fehlschläge sind rot; das Journal bewahrt die Befehle jedes Laufs.</translation>
    </message>
    <message>
        <source>The selected command&apos;s error text</source>
        <translation>Der Fehlertext des gewählten Befehls</translation>
    </message>
    <message>
        <source>Show Journal File</source>
        <translation>Journaldatei zeigen</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Volume Health...</source>
        <translation>Zustand des Volumes …</translation>
    </message>
    <message>
        <source>KextKeeper</source>
        <translation>KextKeeper</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Go</source>
        <translation>&amp;Gehe zu</translation>
    </message>
    <message>
        <source>&amp;Extra</source>
        <translation>&amp;Extra</translation>
    </message>
    <message>
        <source>Extra Version</source>
        <translation>Extra-Version</translation>
    </message>
    <message>
        <source>&amp;Options</source>
        <translation>&amp;Optionen</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Toolbar</source>
        <translation>Symbolleiste</translation>
    </message>
    <message>
        <source>Maintenance</source>
        <translation>Wartung</translation>
    </message>
    <message>
        <source>Installation</source>
        <translation>Installation</translation>
    </message>
    <message>
        <source>Unpacking</source>
        <translation>Entpacken</translation>
    </message>
    <message>
        <source>Checking</source>
        <translation>Prüfen</translation>
    </message>
    <message>
        <source>Loaded Kexts</source>
        <translation>Geladene Kexts</translation>
    </message>
    <message>
        <source>Save System Report…</source>
        <translation>Systembericht sichern…</translation>
    </message>
    <message>
        <source>Ctrl+S</source>
        <translation>Ctrl+S</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>Ctrl+1</source>
        <translation>Ctrl+1</translation>
    </message>
    <message>
        <source>Ctrl+2</source>
        <translation>Ctrl+2</translation>
    </message>
    <message>
        <source>Ctrl+3</source>
        <translation>Ctrl+3</translation>
    </message>
    <message>
        <source>Ctrl+4</source>
        <translation>Ctrl+4</translation>
    </message>
    <message>
        <source>Ctrl+5</source>
        <translation>Ctrl+5</translation>
    </message>
    <message>
        <source>Customize Toolbar…</source>
        <translation>Symbolleiste anpassen…</translation>
    </message>
    <message>
        <source>Move Extensions into KextStore…</source>
        <translation>Extensions in KextStore verschieben…</translation>
    </message>
    <message>
        <source>Move KextStore back to Extensions…</source>
        <translation>KextStore zurück nach Extensions verschieben…</translation>
    </message>
    <message>
        <source>Show Extra Folder</source>
        <translation>Extra-Ordner einblenden</translation>
    </message>
    <message>
        <source>Hide Extra Folder</source>
        <translation>Extra-Ordner ausblenden</translation>
    </message>
    <message>
        <source>Version Independent</source>
        <translation>Versionsunabhängig</translation>
    </message>
    <message>
        <source>10.4</source>
        <translation>10.4</translation>
    </message>
    <message>
        <source>10.5</source>
        <translation>10.5</translation>
    </message>
    <message>
        <source>10.6</source>
        <translation>10.6</translation>
    </message>
    <message>
        <source>10.7</source>
        <translation>10.7</translation>
    </message>
    <message>
        <source>Prelink Kernel</source>
        <translation>Kernel vorverknüpfen</translation>
    </message>
    <message>
        <source>Check for Updates at Start-up</source>
        <translation>Beim Start nach Aktualisierungen suchen</translation>
    </message>
    <message>
        <source>About KextKeeper</source>
        <translation>Über KextKeeper</translation>
    </message>
    <message>
        <source>Donate…</source>
        <translation>Spenden…</translation>
    </message>
    <message>
        <source>KextKeeper %1
Installs, repairs and inspects kernel extensions for a boot loader&apos;s Extra folder.

Free software under the GNU General Public License, version 3 or (at your option) any later version (GPL-3.0-or-later).</source>
        <translation>KextKeeper %1
Installiert, repariert und untersucht Kernel-Erweiterungen für den Extra-Ordner eines Bootloaders.

Freie Software unter der GNU General Public License, Version 3 oder (nach Ihrer Wahl) jeder späteren Version (GPL-3.0-or-later).</translation>
    </message>
    <message>
        <source>&amp;Window</source>
        <translation>&amp;Fenster</translation>
    </message>
    <message>
        <source>Restore Kexts from Backup…</source>
        <translation>Kexts aus Sicherung wiederherstellen…</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>Ctrl+L</source>
        <translation>Ctrl+L</translation>
    </message>
</context>
<context>
    <name>MaintenancePage</name>
    <message>
        <source>&amp;Volume:</source>
        <translation>&amp;Volume:</translation>
    </message>
    <message>
        <source>The volume whose kext folders are repaired and rebuilt</source>
        <translation>Das Volume, dessen Kext-Ordner repariert und neu erstellt werden</translation>
    </message>
    <message>
        <source>Boot loader&apos;s Extra folder</source>
        <translation>Extra-Ordner des Bootloaders</translation>
    </message>
    <message>
        <source>Maintain the E&amp;xtra folder</source>
        <translation>&amp;Den Extra-Ordner warten</translation>
    </message>
    <message>
        <source>Re&amp;pair permissions of Extensions and KextStore</source>
        <translation>&amp;Rechte von Extensions und KextStore reparieren</translation>
    </message>
    <message>
        <source>Re&amp;build Extensions.mkext</source>
        <translation>&amp;Extensions.mkext neu erstellen</translation>
    </message>
    <message>
        <source>System/Library/Extensions</source>
        <translation>System/Library/Extensions</translation>
    </message>
    <message>
        <source>Maintain the s&amp;ystem&apos;s kext folder</source>
        <translation>&amp;Den Kext-Ordner des Systems warten</translation>
    </message>
    <message>
        <source>Repair permissions of S/L/E and the &amp;disk</source>
        <translation>&amp;Rechte von S/L/E und des Volumes reparieren</translation>
    </message>
    <message>
        <source>Rebuild the system&apos;s kext &amp;caches</source>
        <translation>&amp;Die Kext-Caches des Systems neu erstellen</translation>
    </message>
    <message>
        <source>&amp;Start</source>
        <translation>&amp;Starten</translation>
    </message>
</context>
<context>
    <name>MkextBuilderNotice</name>
    <message>
        <source>%1 is missing: the built-in mkext builder is used instead.</source>
        <translation>%1 fehlt: stattdessen wird der eingebaute Mkext-Ersteller verwendet.</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>Dry run: nothing is changed; the commands are listed in the Log (Ctrl+L).</source>
        <translation>Probelauf: Nichts wird geändert; die Befehle stehen im Protokoll (Ctrl+L).</translation>
    </message>
</context>
<context>
    <name>QuitGuard</name>
    <message>
        <source>A task is running. Quit when it ends?</source>
        <translation>Eine Aufgabe läuft. Beenden, wenn sie fertig ist?</translation>
    </message>
    <message>
        <source>Its commands go on either way; the window stays open until they are done.</source>
        <translation>Ihre Befehle laufen in jedem Fall weiter; das Fenster bleibt offen, bis sie fertig sind.</translation>
    </message>
    <message>
        <source>&amp;Quit When It Ends</source>
        <translation>&amp;Beenden, wenn sie fertig ist</translation>
    </message>
</context>
<context>
    <name>ReportController</name>
    <message>
        <source>Report saved to %1.</source>
        <translation>Bericht in %1 gesichert.</translation>
    </message>
    <message>
        <source>Dry run: the report was not written to %1.</source>
        <translation>Probelauf: Der Bericht wurde nicht nach %1 geschrieben.</translation>
    </message>
</context>
<context>
    <name>RestoreController</name>
    <message>
        <source>An installation is running. Restore when it has ended.</source>
        <translation>Eine Installation läuft. Stellen Sie wieder her, wenn sie beendet ist.</translation>
    </message>
    <message>
        <source>Continue?</source>
        <translation>Fortfahren?</translation>
    </message>
    <message numerus="yes">
        <source>Do you want to put back %n kext(s) from %1 into %2? What they replace there is backed up first.</source>
        <translation>
            <numerusform>Möchten Sie %n Kext aus %1 nach %2 zurücklegen? Was es dort ersetzt, wird zuerst gesichert.</numerusform>
            <numerusform>Möchten Sie %n Kexts aus %1 nach %2 zurücklegen? Was sie dort ersetzen, wird zuerst gesichert.</numerusform>
        </translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nein</translation>
    </message>
</context>
<context>
    <name>RestoreDialog</name>
    <message>
        <source>Restore Kexts from Backup</source>
        <translation>Kexts aus Sicherung wiederherstellen</translation>
    </message>
    <message>
        <source>There are no backups in Kext Backups on the desktop.</source>
        <translation>In den Kext Backups auf dem Schreibtisch gibt es keine Sicherungen.</translation>
    </message>
    <message>
        <source>Choose the backup to put back. Its kexts go back to the folder they were taken from; what they replace there is backed up first.</source>
        <translation>Wählen Sie die Sicherung, die zurückgelegt werden soll. Ihre Kexts kommen in den Ordner zurück, aus dem sie genommen wurden; was sie dort ersetzen, wird zuerst gesichert.</translation>
    </message>
    <message>
        <source>Backup</source>
        <translation>Sicherung</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>Datum</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Volume</translation>
    </message>
    <message>
        <source>Taken from</source>
        <translation>Genommen aus</translation>
    </message>
    <message>
        <source>Kexts</source>
        <translation>Kexts</translation>
    </message>
    <message>
        <source>(no note of where they came from)</source>
        <translation>(keine Angabe, woher sie stammen)</translation>
    </message>
    <message>
        <source>Restore…</source>
        <translation>Wiederherstellen…</translation>
    </message>
</context>
<context>
    <name>SandboxOffer</name>
    <message>
        <source>Open the Sandbox Mac</source>
        <translation>Den Sandbox-Mac öffnen</translation>
    </message>
    <message>
        <source>Create a Sandbox Mac</source>
        <translation>Einen Sandbox-Mac anlegen</translation>
    </message>
    <message>
        <source>KextKeeper could not be started on the sandbox Mac in %1.</source>
        <translation>KextKeeper konnte nicht auf dem Sandbox-Mac in %1 gestartet werden.</translation>
    </message>
</context>
<context>
    <name>ToolbarCustomizeDialog</name>
    <message>
        <source>Customize Toolbar</source>
        <translation>Symbolleiste anpassen</translation>
    </message>
    <message>
        <source>Show these items</source>
        <translation>Diese Elemente zeigen</translation>
    </message>
    <message>
        <source>Icon and Text</source>
        <translation>Symbol und Text</translation>
    </message>
    <message>
        <source>Icon Only</source>
        <translation>Nur Symbol</translation>
    </message>
    <message>
        <source>Text Only</source>
        <translation>Nur Text</translation>
    </message>
    <message>
        <source>Show:</source>
        <translation>Zeigen:</translation>
    </message>
</context>
<context>
    <name>TovrelAppDelegate</name>
    <message>
        <source>KextKeeper %1 is available. You can download it from %2</source>
        <translation>KextKeeper %1 ist verfügbar. Sie können es von %2 laden</translation>
    </message>
    <message>
        <source>%1 is blocked while maintenance runs</source>
        <translation>%1 ist gesperrt, solange die Wartung läuft</translation>
    </message>
    <message>
        <source>%1 is blocked while an installation runs</source>
        <translation>%1 ist gesperrt, solange eine Installation läuft</translation>
    </message>
    <message>
        <source>Maintenance</source>
        <translation>Wartung</translation>
    </message>
    <message>
        <source>Installation</source>
        <translation>Installation</translation>
    </message>
    <message>
        <source>Unpacking</source>
        <translation>Entpacken</translation>
    </message>
    <message>
        <source>No volume with an Extra or System/Library folder was found in %1.</source>
        <translation>In %1 wurde kein Volume mit einem Extra- oder System/Library-Ordner gefunden.</translation>
    </message>
</context>
<context>
    <name>UnpackController</name>
    <message>
        <source>%1 is missing: the built-in mkext reader is used instead.</source>
        <translation>%1 fehlt: stattdessen wird der eingebaute Mkext-Leser verwendet.</translation>
    </message>
    <message>
        <source>Dry run: the unpack is listed in the Log; nothing was written.</source>
        <translation>Probelauf: Das Entpacken steht im Protokoll; nichts wurde geschrieben.</translation>
    </message>
</context>
<context>
    <name>UnpackPage</name>
    <message>
        <source>Mkext archive</source>
        <translation>Mkext-Archiv</translation>
    </message>
    <message>
        <source>A&amp;rchive:</source>
        <translation>&amp;Archiv:</translation>
    </message>
    <message>
        <source>No archive chosen</source>
        <translation>Kein Archiv ausgewählt</translation>
    </message>
    <message>
        <source>&amp;Choose…</source>
        <translation>&amp;Auswählen…</translation>
    </message>
    <message>
        <source>Unpack</source>
        <translation>Entpacken</translation>
    </message>
    <message>
        <source>Archi&amp;tecture:</source>
        <translation>&amp;Architektur:</translation>
    </message>
    <message>
        <source>Unpack &amp;into:</source>
        <translation>&amp;Entpacken nach:</translation>
    </message>
    <message>
        <source>Choo&amp;se…</source>
        <translation>Auswählen…</translation>
    </message>
    <message>
        <source>&amp;Unpack</source>
        <translation>&amp;Entpacken</translation>
    </message>
</context>
<context>
    <name>VolumeHealthController</name>
    <message>
        <source>Move to Backups</source>
        <translation>In die Sicherungen</translation>
    </message>
    <message>
        <source>Restore</source>
        <translation>Wiederherstellen</translation>
    </message>
    <message>
        <source>Install...</source>
        <translation>Installieren …</translation>
    </message>
    <message>
        <source>%1 on %2? The maintenance page runs it with its box ticked.</source>
        <translation>%1 auf %2? Die Wartungsseite führt es mit dem angekreuzten Feld aus.</translation>
    </message>
    <message>
        <source>Move %1 out of its folder, into Kext Backups on the desktop? Restore can put it back.</source>
        <translation>%1 aus seinem Ordner in die Kext Backups auf dem Schreibtisch verschieben? Die Wiederherstellung kann es zurücklegen.</translation>
    </message>
    <message>
        <source>%1 was moved to Kext Backups.</source>
        <translation>%1 wurde in die Kext Backups verschoben.</translation>
    </message>
    <message>
        <source>Continue?</source>
        <translation>Fortfahren?</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message numerus="yes">
        <source>Put back %n kext(s) from %1 into %2? What they replace is backed up first.</source>
        <translation>
            <numerusform>%n Kext aus %1 nach %2 zurücklegen? Was es ersetzt, wird vorher gesichert.</numerusform>
            <numerusform>%n Kexts aus %1 nach %2 zurücklegen? Was sie ersetzen, wird vorher gesichert.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>VolumeHealthWindow</name>
    <message>
        <source>Volume Health</source>
        <translation>Zustand des Volumes</translation>
    </message>
    <message>
        <source>Kext</source>
        <translation>Kext</translation>
    </message>
    <message>
        <source>Finding</source>
        <translation>Befund</translation>
    </message>
    <message>
        <source>Fix</source>
        <translation>Behebung</translation>
    </message>
    <message>
        <source>Check Again</source>
        <translation>Erneut prüfen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Volume Health: %1</source>
        <translation>Zustand des Volumes: %1</translation>
    </message>
    <message>
        <source>Checking the kexts of %1...</source>
        <translation>Die Kexts auf %1 werden geprüft …</translation>
    </message>
</context>
</TS>
