<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>Alerts</name>
    <message>
        <source>Something went wrong (%1 %2).</source>
        <translation>Etwas ist schiefgegangen (%1 %2).</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Zeigen</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>No Reminder</source>
        <translation>Keine Erinnerung</translation>
    </message>
</context>
<context>
    <name>Commands</name>
    <message>
        <source>New Task</source>
        <translation>Neue Aufgabe</translation>
    </message>
    <message>
        <source>Clone Task</source>
        <translation>Aufgabe verdoppeln</translation>
    </message>
    <message>
        <source>New Folder</source>
        <translation>Neuer Ordner</translation>
    </message>
    <message>
        <source>New Context</source>
        <translation>Neuer Kontext</translation>
    </message>
    <message>
        <source>New Smart Folder</source>
        <translation>Neuer intelligenter Ordner</translation>
    </message>
    <message>
        <source>Sync with Toodledo</source>
        <translation>Mit Toodledo abgleichen</translation>
    </message>
    <message>
        <source>Preferences…</source>
        <translation>Einstellungen …</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Edit Title</source>
        <translation>Titel bearbeiten</translation>
    </message>
    <message>
        <source>Complete</source>
        <translation>Erledigt</translation>
    </message>
    <message>
        <source>Star</source>
        <translation>Stern</translation>
    </message>
    <message>
        <source>Move to Trash</source>
        <translation>In den Papierkorb legen</translation>
    </message>
    <message>
        <source>Put Back</source>
        <translation>Zurücklegen</translation>
    </message>
    <message>
        <source>Clear Start Date</source>
        <translation>Startdatum entfernen</translation>
    </message>
    <message>
        <source>Clear Due Date</source>
        <translation>Fälligkeit entfernen</translation>
    </message>
    <message>
        <source>Find</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Umbenennen</translation>
    </message>
    <message>
        <source>Archive</source>
        <translation>Archivieren</translation>
    </message>
    <message>
        <source>Unarchive</source>
        <translation>Aus dem Archiv holen</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Empty Trash</source>
        <translation>Papierkorb leeren</translation>
    </message>
    <message>
        <source>Manage Folders</source>
        <translation>Ordner verwalten</translation>
    </message>
    <message>
        <source>Manage Contexts</source>
        <translation>Kontexte verwalten</translation>
    </message>
    <message>
        <source>Manage Tags</source>
        <translation>Schlagwörter verwalten</translation>
    </message>
    <message>
        <source>Manage Smart Folders</source>
        <translation>Intelligente Ordner verwalten</translation>
    </message>
    <message>
        <source>Completed Tasks</source>
        <translation>Erledigte Aufgaben</translation>
    </message>
    <message>
        <source>Only Tasks of This Location</source>
        <translation>Nur Aufgaben dieses Ortes</translation>
    </message>
    <message>
        <source>Tag Browser</source>
        <translation>Schlagwörter</translation>
    </message>
    <message>
        <source>Details</source>
        <translation>Einzelheiten</translation>
    </message>
    <message>
        <source>Menu Bar</source>
        <translation>Menüleiste</translation>
    </message>
    <message>
        <source>Today</source>
        <translation>Heute</translation>
    </message>
    <message>
        <source>Inbox</source>
        <translation>Eingang</translation>
    </message>
    <message>
        <source>Location</source>
        <translation>Ort</translation>
    </message>
    <message>
        <source>Trash</source>
        <translation>Papierkorb</translation>
    </message>
    <message>
        <source>Move to the Lists</source>
        <translation>Zu den Listen</translation>
    </message>
    <message>
        <source>Move to the Tasks</source>
        <translation>Zu den Aufgaben</translation>
    </message>
    <message>
        <source>Keyboard Shortcuts</source>
        <translation>Tastenkürzel</translation>
    </message>
    <message>
        <source>About Quelvin</source>
        <translation>Über Quelvin</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>Lists</source>
        <translation>Listen</translation>
    </message>
    <message>
        <source>View</source>
        <translation>Ansicht</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Quick Entry</source>
        <translation>Schnelleingabe</translation>
    </message>
    <message>
        <source>Edit Smart Folder…</source>
        <translation>Intelligenten Ordner bearbeiten …</translation>
    </message>
</context>
<context>
    <name>Dates</name>
    <message>
        <source>today</source>
        <translation>heute</translation>
    </message>
    <message>
        <source>tomorrow</source>
        <translation>morgen</translation>
    </message>
    <message>
        <source>yesterday</source>
        <translation>gestern</translation>
    </message>
    <message>
        <source>next week</source>
        <translation>nächste Woche</translation>
    </message>
    <message>
        <source>ddd d MMM yyyy</source>
        <comment>a full date</comment>
        <translation>ddd d. MMM yyyy</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <comment>date, time</comment>
        <translation>%1, %2</translation>
    </message>
</context>
<context>
    <name>DefaultRecords</name>
    <message>
        <source>Inbox</source>
        <translation>Eingang</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Ohne</translation>
    </message>
    <message>
        <source>Next Action</source>
        <translation>Nächster Schritt</translation>
    </message>
    <message>
        <source>Active</source>
        <translation>Aktiv</translation>
    </message>
    <message>
        <source>Planning</source>
        <translation>In Planung</translation>
    </message>
    <message>
        <source>Delegated</source>
        <translation>Abgegeben</translation>
    </message>
    <message>
        <source>Waiting</source>
        <translation>Wartet</translation>
    </message>
    <message>
        <source>Hold</source>
        <translation>Angehalten</translation>
    </message>
    <message>
        <source>Postponed</source>
        <translation>Verschoben</translation>
    </message>
    <message>
        <source>Someday</source>
        <translation>Irgendwann</translation>
    </message>
    <message>
        <source>Cancelled</source>
        <translation>Abgebrochen</translation>
    </message>
    <message>
        <source>Reference</source>
        <translation>Nachschlagen</translation>
    </message>
</context>
<context>
    <name>Errors</name>
    <message>
        <source>Your changes could not be saved. They are kept in the program.</source>
        <translation>Deine Änderungen konnten nicht gesichert werden. Sie bleiben im Programm erhalten.</translation>
    </message>
    <message>
        <source>The file of the task store was moved, replaced or deleted while it was open. Your changes are kept in the program.</source>
        <translation>Die Aufgabendatei wurde verschoben, ersetzt oder gelöscht, während sie offen war. Deine Änderungen bleiben im Programm erhalten.</translation>
    </message>
    <message>
        <source>The store &quot;%1&quot; can be read but not changed. To change tasks, make the file and its folder writable and start again.</source>
        <translation>Die Aufgabendatei „%1“ kann gelesen, aber nicht geändert werden. Um Aufgaben zu ändern, mache die Datei und ihren Ordner beschreibbar und starte neu.</translation>
    </message>
    <message>
        <source>The store &quot;%1&quot; is already open in another window.</source>
        <translation>Die Aufgabendatei „%1“ ist schon in einem anderen Fenster offen.</translation>
    </message>
    <message>
        <source>The store &quot;%1&quot; could not be locked.</source>
        <translation>Die Aufgabendatei „%1“ konnte nicht gesperrt werden.</translation>
    </message>
    <message>
        <source>The store &quot;%1&quot; could not be opened.</source>
        <translation>Die Aufgabendatei „%1“ konnte nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>The store &quot;%1&quot; is damaged. It was left as it is.</source>
        <translation>Die Aufgabendatei „%1“ ist beschädigt. Sie wurde gelassen, wie sie ist.</translation>
    </message>
    <message>
        <source>The store &quot;%1&quot; is damaged. Some of your tasks may be missing.</source>
        <translation>Die Aufgabendatei „%1“ ist beschädigt. Einige deiner Aufgaben fehlen vielleicht.</translation>
    </message>
    <message>
        <source>The store &quot;%1&quot; was written by a newer version of the program. It was left as it is.</source>
        <translation>Die Aufgabendatei „%1“ wurde von einer neueren Version des Programms geschrieben. Sie wurde gelassen, wie sie ist.</translation>
    </message>
    <message>
        <source>The file &quot;%1&quot; is not a task store.</source>
        <translation>Die Datei „%1“ ist keine Aufgabendatei.</translation>
    </message>
    <message>
        <source>Another store lies in the place of &quot;%1&quot;.</source>
        <translation>An der Stelle von „%1“ liegt eine andere Aufgabendatei.</translation>
    </message>
    <message>
        <source>The task store could not be read.</source>
        <translation>Die Aufgabendatei konnte nicht gelesen werden.</translation>
    </message>
    <message>
        <source>The daily backup could not be written.</source>
        <translation>Die tägliche Sicherung konnte nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>The synchronisation broke off.</source>
        <translation>Der Abgleich brach ab.</translation>
    </message>
    <message>
        <source>A synchronisation is already under way. Wait until it has ended.</source>
        <translation>Ein Abgleich läuft bereits. Warten Sie, bis er beendet ist.</translation>
    </message>
    <message>
        <source>The synchronisation cannot write its lock file beside your tasks. Make room on the disk, or make the folder writable.</source>
        <translation>Der Abgleich kann seine Sperrdatei neben Ihren Aufgaben nicht schreiben. Schaffen Sie Platz auf dem Datenträger oder machen Sie den Ordner beschreibbar.</translation>
    </message>
    <message>
        <source>This is no position. Write it as 52.4915, 13.4236 or as 52° 29.49&apos; N, 13° 25.42&apos; E.</source>
        <translation>Das ist keine Position. Schreiben Sie sie wie 52.4915, 13.4236 oder wie 52° 29.49&apos; N, 13° 25.42&apos; E.</translation>
    </message>
    <message>
        <source>Minutes and seconds are below 60.</source>
        <translation>Minuten und Sekunden liegen unter 60.</translation>
    </message>
    <message>
        <source>The latitude lies between 90° south and 90° north.</source>
        <translation>Die Breite liegt zwischen 90° Süd und 90° Nord.</translation>
    </message>
    <message>
        <source>The longitude lies between 180° west and 180° east.</source>
        <translation>Die Länge liegt zwischen 180° West und 180° Ost.</translation>
    </message>
    <message>
        <source>The settings could not be stored. Your former settings are kept.</source>
        <translation>Die Einstellungen konnten nicht gespeichert werden. Die bisherigen bleiben erhalten.</translation>
    </message>
    <message>
        <source>The settings could not be stored: another program has been writing them for seconds.</source>
        <translation>Die Einstellungen konnten nicht gespeichert werden: Ein anderes Programm schreibt sie seit Sekunden.</translation>
    </message>
    <message>
        <source>The settings could not be read.</source>
        <translation>Die Einstellungen konnten nicht gelesen werden.</translation>
    </message>
    <message>
        <source>The password could not be read from the keyring of your desktop.</source>
        <translation>Das Passwort konnte nicht aus dem Schlüsselbund gelesen werden.</translation>
    </message>
    <message>
        <source>The password could not be kept in the keyring of your desktop.</source>
        <translation>Das Passwort konnte nicht im Schlüsselbund abgelegt werden.</translation>
    </message>
    <message>
        <source>The password could not be taken out of the keyring of your desktop.</source>
        <translation>Das Passwort konnte nicht aus dem Schlüsselbund entfernt werden.</translation>
    </message>
    <message>
        <source>The password is no longer in the keyring of your desktop. Enter it once more.</source>
        <translation>Das Passwort liegt nicht mehr im Schlüsselbund. Geben Sie es noch einmal ein.</translation>
    </message>
    <message>
        <source>The keyring of your desktop is waiting for you.</source>
        <translation>Der Schlüsselbund wartet auf Sie.</translation>
    </message>
</context>
<context>
    <name>HotKeys</name>
    <message>
        <source>This desktop has no global key combinations.</source>
        <translation>Diese Arbeitsumgebung kennt keine Tastenkürzel für alle Programme.</translation>
    </message>
    <message>
        <source>This key is not known on this keyboard.</source>
        <translation>Diese Tastatur hat die Taste nicht.</translation>
    </message>
    <message>
        <source>The desktop did not accept the key combination.</source>
        <translation>Die Arbeitsumgebung hat das Tastenkürzel nicht angenommen.</translation>
    </message>
    <message>
        <source>Another program uses this key combination already.</source>
        <translation>Ein anderes Programm benutzt dieses Tastenkürzel schon.</translation>
    </message>
</context>
<context>
    <name>Keys</name>
    <message>
        <source>Ctrl</source>
        <translation>Strg</translation>
    </message>
    <message>
        <source>Alt</source>
        <translation>Alt</translation>
    </message>
    <message>
        <source>Shift</source>
        <translation>Umschalt</translation>
    </message>
    <message>
        <source>Super</source>
        <translation>Super</translation>
    </message>
</context>
<context>
    <name>Location</name>
    <message>
        <source>The desktop&apos;s location service has ended.</source>
        <translation>Der Ortungsdienst des Desktops wurde beendet.</translation>
    </message>
    <message>
        <source>The desktop&apos;s location service does not tell Quelvin where you are. Allow it in the desktop&apos;s privacy settings, then turn &quot;Use my location&quot; off and on.</source>
        <translation>Der Ortungsdienst des Desktops sagt Quelvin nicht, wo Sie sind. Erlauben Sie es in den Datenschutzeinstellungen des Desktops und schalten Sie dann „Meinen Ort verwenden“ aus und wieder ein.</translation>
    </message>
    <message>
        <source>There is no location service on this desktop. Install GeoClue, or choose a receiver in the preferences.</source>
        <translation>Auf diesem Desktop gibt es keinen Ortungsdienst. Installieren Sie GeoClue oder wählen Sie in den Einstellungen einen Empfänger.</translation>
    </message>
    <message>
        <source>The desktop&apos;s location service does not know where you are.</source>
        <translation>Der Ortungsdienst des Desktops weiß nicht, wo Sie sind.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be read for positions.</source>
        <translation>Aus „%1“ lassen sich keine Positionen lesen.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; sends no positions any more.</source>
        <translation>„%1“ sendet keine Positionen mehr.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; holds or sends no positions in the form NMEA.</source>
        <translation>„%1“ enthält oder sendet keine Positionen im Format NMEA.</translation>
    </message>
</context>
<context>
    <name>Main</name>
    <message>
        <source>Tasks, the getting-things-done way.</source>
        <translation>Aufgaben, damit Dinge getan werden.</translation>
    </message>
    <message>
        <source>The folder of the task store.</source>
        <translation>Der Ordner der Aufgabendatei.</translation>
    </message>
    <message>
        <source>folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>The file of the settings.</source>
        <translation>Die Datei der Einstellungen.</translation>
    </message>
    <message>
        <source>file</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Open the quick entry with this title, which may be empty.</source>
        <translation>Öffnet die Schnelleingabe mit diesem Titel; er darf leer sein.</translation>
    </message>
    <message>
        <source>text</source>
        <translation>Text</translation>
    </message>
    <message>
        <source>Open the quick entry with the text that is selected on the desktop.</source>
        <translation>Öffnet die Schnelleingabe mit dem Text, der gerade markiert ist.</translation>
    </message>
    <message>
        <source>Synchronise the tasks.</source>
        <translation>Die Aufgaben abgleichen.</translation>
    </message>
</context>
<context>
    <name>Reminders</name>
    <message>
        <source>No Reminder</source>
        <translation>Keine Erinnerung</translation>
    </message>
    <message>
        <source>15 minutes</source>
        <translation>15 Minuten</translation>
    </message>
    <message>
        <source>30 minutes</source>
        <translation>30 Minuten</translation>
    </message>
    <message>
        <source>45 minutes</source>
        <translation>45 Minuten</translation>
    </message>
    <message>
        <source>60 minutes</source>
        <translation>60 Minuten</translation>
    </message>
    <message>
        <source>90 minutes</source>
        <translation>90 Minuten</translation>
    </message>
    <message>
        <source>2 hours</source>
        <translation>2 Stunden</translation>
    </message>
    <message>
        <source>3 hours</source>
        <translation>3 Stunden</translation>
    </message>
    <message>
        <source>4 hours</source>
        <translation>4 Stunden</translation>
    </message>
    <message>
        <source>1 day</source>
        <translation>1 Tag</translation>
    </message>
    <message>
        <source>2 days</source>
        <translation>2 Tage</translation>
    </message>
    <message>
        <source>3 days</source>
        <translation>3 Tage</translation>
    </message>
    <message>
        <source>4 days</source>
        <translation>4 Tage</translation>
    </message>
    <message>
        <source>5 days</source>
        <translation>5 Tage</translation>
    </message>
    <message>
        <source>6 days</source>
        <translation>6 Tage</translation>
    </message>
    <message>
        <source>1 week</source>
        <translation>1 Woche</translation>
    </message>
    <message>
        <source>2 weeks</source>
        <translation>2 Wochen</translation>
    </message>
    <message>
        <source>4 weeks</source>
        <translation>4 Wochen</translation>
    </message>
    <message>
        <source>Never</source>
        <translation>Nie</translation>
    </message>
    <message>
        <source>Every day</source>
        <translation>Jeden Tag</translation>
    </message>
    <message>
        <source>Every week</source>
        <translation>Jede Woche</translation>
    </message>
    <message>
        <source>Every 2 weeks</source>
        <translation>Alle 2 Wochen</translation>
    </message>
    <message>
        <source>Every month</source>
        <translation>Jeden Monat</translation>
    </message>
    <message>
        <source>Every 2 months</source>
        <translation>Alle 2 Monate</translation>
    </message>
    <message>
        <source>Every 3 months</source>
        <translation>Alle 3 Monate</translation>
    </message>
    <message>
        <source>Every 6 months</source>
        <translation>Alle 6 Monate</translation>
    </message>
    <message>
        <source>Every year</source>
        <translation>Jedes Jahr</translation>
    </message>
    <message>
        <source>With its parent</source>
        <translation>Mit der übergeordneten</translation>
    </message>
    <message>
        <source>3 weeks</source>
        <translation>3 Wochen</translation>
    </message>
    <message>
        <source>%1, after completion</source>
        <translation>%1, nach dem Erledigen</translation>
    </message>
</context>
<context>
    <name>SmartFolderEditor</name>
    <message>
        <source>contains</source>
        <translation>enthält</translation>
    </message>
    <message>
        <source>does not contain</source>
        <translation>enthält nicht</translation>
    </message>
    <message>
        <source>is</source>
        <translation>ist</translation>
    </message>
    <message>
        <source>is not</source>
        <translation>ist nicht</translation>
    </message>
    <message>
        <source>begins with</source>
        <translation>beginnt mit</translation>
    </message>
    <message>
        <source>ends with</source>
        <translation>endet mit</translation>
    </message>
    <message>
        <source>is empty</source>
        <translation>ist leer</translation>
    </message>
    <message>
        <source>is not empty</source>
        <translation>ist nicht leer</translation>
    </message>
    <message>
        <source>include</source>
        <translation>umfassen</translation>
    </message>
    <message>
        <source>do not include</source>
        <translation>umfassen nicht</translation>
    </message>
    <message>
        <source>include one with</source>
        <translation>umfassen eines mit</translation>
    </message>
    <message>
        <source>include none with</source>
        <translation>umfassen keines mit</translation>
    </message>
    <message>
        <source>are set</source>
        <translation>sind vergeben</translation>
    </message>
    <message>
        <source>are not set</source>
        <translation>sind nicht vergeben</translation>
    </message>
    <message>
        <source>is at least</source>
        <translation>ist mindestens</translation>
    </message>
    <message>
        <source>is at most</source>
        <translation>ist höchstens</translation>
    </message>
    <message>
        <source>is at most … from now</source>
        <translation>ist höchstens … entfernt</translation>
    </message>
    <message>
        <source>is more than … from now</source>
        <translation>ist mehr als … entfernt</translation>
    </message>
    <message>
        <source>is at most … ago</source>
        <translation>ist höchstens … her</translation>
    </message>
    <message>
        <source>is more than … ago</source>
        <translation>ist mehr als … her</translation>
    </message>
    <message>
        <source>is on</source>
        <translation>ist am</translation>
    </message>
    <message>
        <source>is before</source>
        <translation>ist vor</translation>
    </message>
    <message>
        <source>is after</source>
        <translation>ist nach</translation>
    </message>
    <message>
        <source>is not after</source>
        <translation>ist nicht nach</translation>
    </message>
    <message>
        <source>is not before</source>
        <translation>ist nicht vor</translation>
    </message>
    <message>
        <source>is set</source>
        <translation>ist gesetzt</translation>
    </message>
    <message>
        <source>is not set</source>
        <translation>ist nicht gesetzt</translation>
    </message>
    <message>
        <source>Title</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>Notes</source>
        <translation>Notizen</translation>
    </message>
    <message>
        <source>Tags</source>
        <translation>Schlagwörter</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Context</source>
        <translation>Kontext</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Zustand</translation>
    </message>
    <message>
        <source>Priority</source>
        <translation>Priorität</translation>
    </message>
    <message>
        <source>Star</source>
        <translation>Stern</translation>
    </message>
    <message>
        <source>Complete</source>
        <translation>Erledigt</translation>
    </message>
    <message>
        <source>Due date</source>
        <translation>Fälligkeit</translation>
    </message>
    <message>
        <source>Start date</source>
        <translation>Startdatum</translation>
    </message>
    <message>
        <source>Created</source>
        <translation>Angelegt</translation>
    </message>
    <message>
        <source>Modified</source>
        <translation>Geändert</translation>
    </message>
    <message>
        <source>Completed on</source>
        <translation>Erledigt am</translation>
    </message>
    <message>
        <source>Length</source>
        <translation>Dauer</translation>
    </message>
    <message>
        <source>Reminder</source>
        <translation>Erinnerung</translation>
    </message>
    <message>
        <source>Next actions</source>
        <translation>Nächste Schritte</translation>
    </message>
    <message>
        <source>Waiting</source>
        <translation>Wartet</translation>
    </message>
    <message>
        <source>Due this week</source>
        <translation>Diese Woche fällig</translation>
    </message>
    <message>
        <source>Overdue</source>
        <translation>Überfällig</translation>
    </message>
    <message>
        <source>Starred</source>
        <translation>Mit Stern</translation>
    </message>
    <message>
        <source>Recently completed</source>
        <translation>Kürzlich erledigt</translation>
    </message>
    <message>
        <source>%1 minutes</source>
        <translation>%1 Minuten</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Ohne</translation>
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
        <source>days</source>
        <translation>Tage</translation>
    </message>
    <message>
        <source>weeks</source>
        <translation>Wochen</translation>
    </message>
    <message>
        <source>months</source>
        <translation>Monate</translation>
    </message>
</context>
<context>
    <name>SourceList</name>
    <message>
        <source>Today</source>
        <translation>Heute</translation>
    </message>
    <message>
        <source>Inbox</source>
        <translation>Eingang</translation>
    </message>
    <message>
        <source>Location</source>
        <translation>Ort</translation>
    </message>
    <message>
        <source>Trash</source>
        <translation>Papierkorb</translation>
    </message>
    <message>
        <source>FOLDERS</source>
        <translation>ORDNER</translation>
    </message>
    <message>
        <source>CONTEXTS</source>
        <translation>KONTEXTE</translation>
    </message>
    <message>
        <source>SMART FOLDERS</source>
        <translation>INTELLIGENTE ORDNER</translation>
    </message>
    <message>
        <source>ARCHIVED FOLDERS</source>
        <translation>ARCHIVIERTE ORDNER</translation>
    </message>
</context>
<context>
    <name>Store</name>
    <message>
        <source>Use that window, or close it first.</source>
        <translation>Benutze jenes Fenster, oder schließe es zuerst.</translation>
    </message>
    <message>
        <source>Open it with the newer version.</source>
        <translation>Öffne sie mit der neueren Version.</translation>
    </message>
    <message>
        <source>Copies of the last days lie in &quot;%1&quot;: move the damaged file away and put the latest copy in its place.</source>
        <translation>Kopien der letzten Tage liegen in „%1“: Lege die beschädigte Datei beiseite und die neueste Kopie an ihre Stelle.</translation>
    </message>
    <message>
        <source>Move it out of &quot;%1&quot; to start with an empty one.</source>
        <translation>Lege sie aus „%1“ fort, um mit einer leeren zu beginnen.</translation>
    </message>
    <message>
        <source>Look whether &quot;%1&quot; is a folder of yours, and whether its disk has room.</source>
        <translation>Sieh nach, ob „%1“ ein Ordner von dir ist und ob auf seinem Datenträger noch Platz ist.</translation>
    </message>
</context>
<context>
    <name>TaskTable</name>
    <message>
        <source>Negative</source>
        <translation>Negativ</translation>
    </message>
    <message>
        <source>Low</source>
        <translation>Niedrig</translation>
    </message>
    <message>
        <source>Medium</source>
        <translation>Mittel</translation>
    </message>
    <message>
        <source>High</source>
        <translation>Hoch</translation>
    </message>
    <message>
        <source>Top</source>
        <translation>Höchste</translation>
    </message>
    <message>
        <source>Today</source>
        <translation>Heute</translation>
    </message>
    <message>
        <source>Tomorrow</source>
        <translation>Morgen</translation>
    </message>
    <message>
        <source>Yesterday</source>
        <translation>Gestern</translation>
    </message>
    <message>
        <source>d MMM</source>
        <comment>a day of this year</comment>
        <translation>d. MMM</translation>
    </message>
    <message>
        <source>d MMM yyyy</source>
        <comment>a day of another year</comment>
        <translation>d. MMM yyyy</translation>
    </message>
    <message>
        <source>%1 %2</source>
        <comment>day, time</comment>
        <translation>%1 %2</translation>
    </message>
    <message>
        <source>%1 min</source>
        <translation>%1 Min.</translation>
    </message>
    <message>
        <source>%1 h</source>
        <translation>%1 Std.</translation>
    </message>
    <message>
        <source>%1 h %2 min</source>
        <translation>%1 Std. %2 Min.</translation>
    </message>
    <message>
        <source>%1 – %2</source>
        <comment>priority: number, name</comment>
        <translation>%1 – %2</translation>
    </message>
    <message>
        <source>Title</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>Star</source>
        <translation>Stern</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Context</source>
        <translation>Kontext</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Zustand</translation>
    </message>
    <message>
        <source>Priority</source>
        <translation>Priorität</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Start</translation>
    </message>
    <message>
        <source>Due</source>
        <translation>Fällig</translation>
    </message>
    <message>
        <source>Length</source>
        <translation>Dauer</translation>
    </message>
    <message>
        <source>Created</source>
        <translation>Angelegt</translation>
    </message>
    <message>
        <source>Modified</source>
        <translation>Geändert</translation>
    </message>
    <message>
        <source>Here</source>
        <translation>Hier</translation>
    </message>
</context>
<context>
    <name>TipText</name>
    <message>
        <source>Organizes tasks something they all have in common, such as a folder or when the task is due.</source>
        <translation>Ordnet Aufgaben nach dem, was sie gemeinsam haben, etwa einem Ordner oder ihrer Fälligkeit.</translation>
    </message>
    <message>
        <source>Everything that starts or is due by today gathers here by itself. Give a task a start date or a due date, or drop it on Today, and it will be in this list when its day comes.</source>
        <translation>Was bis heute beginnt oder fällig ist, sammelt sich hier von selbst. Gib einer Aufgabe ein Startdatum oder eine Fälligkeit oder ziehe sie auf Heute, und sie steht in dieser Liste, wenn ihr Tag gekommen ist.</translation>
    </message>
    <message>
        <source>What comes to mind goes here first. Write it down now and decide later: drag a task from the Inbox to a folder once you know where it belongs.</source>
        <translation>Was dir einfällt, kommt zuerst hierher. Schreib es jetzt auf und entscheide später: Ziehe eine Aufgabe aus dem Eingang in einen Ordner, sobald du weißt, wohin sie gehört.</translation>
    </message>
    <message>
        <source>Tasks that you can do where you are. Give a context a place, and its tasks show up here when you are near it.</source>
        <translation>Aufgaben, die du erledigen kannst, wo du bist. Gib einem Kontext einen Ort, und seine Aufgaben erscheinen hier, wenn du in der Nähe bist.</translation>
    </message>
    <message>
        <source>Deleted tasks wait here. Put one back if you change your mind; the next synchronization deletes the rest everywhere. Emptying the Trash deletes them on this computer only.</source>
        <translation>Gelöschte Aufgaben warten hier. Lege eine zurück, wenn du es dir anders überlegst; der nächste Abgleich löscht den Rest überall. Den Papierkorb zu leeren löscht sie nur auf diesem Computer.</translation>
    </message>
    <message>
        <source>A folder holds the tasks of one project or one part of your life. Add tasks in the field above, or drag them here from another list.</source>
        <translation>Ein Ordner enthält die Aufgaben eines Vorhabens oder eines Teils deines Lebens. Füge oben im Feld Aufgaben hinzu oder ziehe sie aus einer anderen Liste hierher.</translation>
    </message>
    <message>
        <source>A context is what you need for a task: a place, a tool, a person. Give tasks a context, and see here all that you can do when you have it.</source>
        <translation>Ein Kontext ist, was du für eine Aufgabe brauchst: ein Ort, ein Werkzeug, ein Mensch. Gib Aufgaben einen Kontext, und du siehst hier alles, was du damit tun kannst.</translation>
    </message>
    <message>
        <source>A smart folder is a question that is always answered: it shows the tasks that match its criteria, wherever they are.</source>
        <translation>Ein intelligenter Ordner ist eine Frage, die immer beantwortet ist: Er zeigt die Aufgaben, die seinen Bedingungen entsprechen, wo immer sie liegen.</translation>
    </message>
</context>
<context>
    <name>ToodledoSync</name>
    <message>
        <source>Could not log on to Toodledo.</source>
        <translation>Die Anmeldung bei Toodledo gelang nicht.</translation>
    </message>
    <message>
        <source>Could not log on to Toodledo. Check your Internet connection, and make sure your user name and password are correct.</source>
        <translation>Die Anmeldung bei Toodledo gelang nicht. Prüfe deine Internetverbindung und ob Benutzername und Passwort stimmen.</translation>
    </message>
    <message>
        <source>Could not synchronize with Toodledo.</source>
        <translation>Der Abgleich mit Toodledo gelang nicht.</translation>
    </message>
    <message>
        <source>Could not synchronize with Toodledo. The most likely cause is that you have reached the hourly synch limit of ToodleDo. Wait and try again later.</source>
        <translation>Der Abgleich mit Toodledo gelang nicht. Wahrscheinlich ist die stündliche Grenze von ToodleDo erreicht. Warte und versuche es später wieder.</translation>
    </message>
    <message>
        <source>Login problem</source>
        <translation>Problem bei der Anmeldung</translation>
    </message>
    <message>
        <source>Synchronization problem</source>
        <translation>Problem beim Abgleich</translation>
    </message>
    <message>
        <source>Logging in to Toodledo...</source>
        <translation>Anmeldung bei Toodledo …</translation>
    </message>
    <message>
        <source>Retrieving folders...</source>
        <translation>Ordner werden geholt …</translation>
    </message>
    <message>
        <source>Deleting folders on server.</source>
        <translation>Ordner werden auf dem Server gelöscht.</translation>
    </message>
    <message>
        <source>Retrieving contexts...</source>
        <translation>Kontexte werden geholt …</translation>
    </message>
    <message>
        <source>Retrieving tasks...</source>
        <translation>Aufgaben werden geholt …</translation>
    </message>
    <message>
        <source>Saving data</source>
        <translation>Sichern</translation>
    </message>
    <message>
        <source>Beginning sync process</source>
        <translation>Der Abgleich beginnt</translation>
    </message>
    <message>
        <source>Test message</source>
        <translation>Testnachricht</translation>
    </message>
    <message>
        <source>Starting Toodledo sync</source>
        <translation>Abgleich mit Toodledo beginnt</translation>
    </message>
    <message>
        <source>Toodledo sync may take a few moments.</source>
        <translation>Der Abgleich mit Toodledo kann einen Augenblick dauern.</translation>
    </message>
    <message>
        <source>Toodledo Sync Complete</source>
        <translation>Abgleich mit Toodledo fertig</translation>
    </message>
    <message>
        <source>Toodledo synchronization completed.</source>
        <translation>Der Abgleich mit Toodledo ist fertig.</translation>
    </message>
</context>
<context>
    <name>app::MainThreadSyncHost</name>
    <message>
        <source>Delete here too</source>
        <translation>Auch hier löschen</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Behalten</translation>
    </message>
</context>
<context>
    <name>app::QVLLocationManagerDelegate</name>
    <message>
        <source>Quelvin does not know where you are. Turn on &quot;Use my location&quot; in the preferences.</source>
        <translation>Quelvin weiß nicht, wo Sie sind. Schalten Sie in den Einstellungen „Meinen Ort verwenden“ ein.</translation>
    </message>
    <message>
        <source>Looking for your position…</source>
        <translation>Ihre Position wird gesucht …</translation>
    </message>
</context>
<context>
    <name>app::ReminderTimer</name>
    <message>
        <source>Upcoming event(s): </source>
        <translation>Es steht an: </translation>
    </message>
</context>
<context>
    <name>app::StoreCare</name>
    <message>
        <source>The last copies of it lie in &quot;%1&quot;.</source>
        <translation>Die letzten Kopien davon liegen in „%1“.</translation>
    </message>
</context>
<context>
    <name>app::TMApplicationDelegate</name>
    <message>
        <source>Could not save changes while quitting. Quit anyway?</source>
        <translation>Die Änderungen konnten beim Beenden nicht gesichert werden. Trotzdem beenden?</translation>
    </message>
    <message>
        <source>Quit anyway</source>
        <translation>Trotzdem beenden</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>A change of yours gave way to one made elsewhere at the same time.</source>
        <translation>Eine Änderung von dir wich einer, die gleichzeitig anderswo gemacht wurde.</translation>
    </message>
    <message>
        <source>Your changes are not saved yet; trying again.</source>
        <translation>Deine Änderungen sind noch nicht gesichert; es wird wieder versucht.</translation>
    </message>
    <message>
        <source>Another program is writing to your tasks; your changes are saved as soon as it is done.</source>
        <translation>Ein anderes Programm schreibt gerade in deine Aufgaben; deine Änderungen werden gesichert, sobald es fertig ist.</translation>
    </message>
    <message>
        <source>The hot key opens no quick entry. %1</source>
        <translation>Das Tastenkürzel öffnet keine Schnelleingabe. %1</translation>
    </message>
    <message>
        <source>Quick Entry</source>
        <translation>Schnelleingabe</translation>
    </message>
</context>
<context>
    <name>viewcontrollers::MainMenuController</name>
    <message>
        <source>New Folder</source>
        <translation>Neuer Ordner</translation>
    </message>
    <message>
        <source>New Context</source>
        <translation>Neuer Kontext</translation>
    </message>
    <message>
        <source>New Smart Folder</source>
        <translation>Neuer intelligenter Ordner</translation>
    </message>
    <message>
        <source>Delete &quot;%1&quot;</source>
        <translation>„%1“ löschen</translation>
    </message>
    <message>
        <source>Archive</source>
        <translation>Archivieren</translation>
    </message>
    <message>
        <source>Unarchive</source>
        <translation>Aus dem Archiv holen</translation>
    </message>
    <message>
        <source>Empty Trash</source>
        <translation>Papierkorb leeren</translation>
    </message>
</context>
<context>
    <name>viewcontrollers::SourceListController</name>
    <message>
        <source>Move to &quot;%1&quot;</source>
        <translation>Nach „%1“ bewegen</translation>
    </message>
    <message>
        <source>%1 tasks, %2 days</source>
        <translation>%1 Aufgaben, %2 Tage</translation>
    </message>
    <message>
        <source>%1 tasks, %2 day</source>
        <translation>%1 Aufgaben, %2 Tag</translation>
    </message>
</context>
<context>
    <name>viewcontrollers::TaskCommands</name>
    <message>
        <source>Add Task</source>
        <translation>Aufgabe hinzufügen</translation>
    </message>
    <message>
        <source>New Task</source>
        <translation>Neue Aufgabe</translation>
    </message>
    <message>
        <source>Clone Task</source>
        <translation>Aufgabe verdoppeln</translation>
    </message>
    <message>
        <source>Move to Trash</source>
        <translation>In den Papierkorb legen</translation>
    </message>
    <message>
        <source>Put Back</source>
        <translation>Zurücklegen</translation>
    </message>
    <message>
        <source>Complete</source>
        <translation>Erledigt</translation>
    </message>
    <message>
        <source>Reopen</source>
        <translation>Wieder öffnen</translation>
    </message>
    <message>
        <source>Add Star</source>
        <translation>Stern geben</translation>
    </message>
    <message>
        <source>Remove Star</source>
        <translation>Stern nehmen</translation>
    </message>
    <message>
        <source>Clear Due Date</source>
        <translation>Fälligkeit entfernen</translation>
    </message>
    <message>
        <source>Clear Start Date</source>
        <translation>Startdatum entfernen</translation>
    </message>
    <message>
        <source>The text was too long for a task; its beginning was taken.</source>
        <translation>Der Text war zu lang für eine Aufgabe; sein Anfang wurde übernommen.</translation>
    </message>
</context>
<context>
    <name>viewcontrollers::TasksArrayController</name>
    <message>
        <source>Edit %1</source>
        <translation>%1 bearbeiten</translation>
    </message>
</context>
<context>
    <name>views::CalendarPopup</name>
    <message>
        <source>Today</source>
        <translation>Heute</translation>
    </message>
    <message>
        <source>Tomorrow</source>
        <translation>Morgen</translation>
    </message>
    <message>
        <source>Next week</source>
        <translation>Nächste Woche</translation>
    </message>
    <message>
        <source>At</source>
        <translation>Um</translation>
    </message>
    <message>
        <source>Set</source>
        <translation>Setzen</translation>
    </message>
</context>
<context>
    <name>views::ContextPlaceView</name>
    <message>
        <source>%1 m from you.</source>
        <translation>%1 m von Ihnen entfernt.</translation>
    </message>
    <message>
        <source>%1 km from you.</source>
        <translation>%1 km von Ihnen entfernt.</translation>
    </message>
    <message>
        <source>Belongs to a place</source>
        <translation>Gehört zu einem Ort</translation>
    </message>
    <message>
        <source>52.4915, 13.4236 or 52° 29.49&apos; N, 13° 25.42&apos; E</source>
        <translation>52.4915, 13.4236 oder 52° 29.49&apos; N, 13° 25.42&apos; E</translation>
    </message>
    <message>
        <source>Coordinates</source>
        <translation>Koordinaten</translation>
    </message>
    <message>
        <source>Use My Position</source>
        <translation>Meine Position verwenden</translation>
    </message>
    <message>
        <source>Show its tasks everywhere</source>
        <translation>Aufgaben überall zeigen</translation>
    </message>
    <message>
        <source>Type where it is, or go there and use your position.</source>
        <translation>Geben Sie ein, wo er ist, oder gehen Sie hin und verwenden Sie Ihre Position.</translation>
    </message>
    <message>
        <source>Change Place</source>
        <translation>Ort ändern</translation>
    </message>
</context>
<context>
    <name>views::CriteriaGroupView</name>
    <message>
        <source>Which conditions must hold</source>
        <translation>Welche Bedingungen gelten müssen</translation>
    </message>
    <message>
        <source>All of these hold</source>
        <translation>Alle diese gelten</translation>
    </message>
    <message>
        <source>Any of these holds</source>
        <translation>Eine von diesen gilt</translation>
    </message>
    <message>
        <source>None of these holds</source>
        <translation>Keine von diesen gilt</translation>
    </message>
</context>
<context>
    <name>views::CriteriaItemView</name>
    <message>
        <source>Remove this condition</source>
        <translation>Diese Bedingung entfernen</translation>
    </message>
    <message>
        <source>Add a condition below</source>
        <translation>Darunter eine Bedingung hinzufügen</translation>
    </message>
    <message>
        <source>Add a group below</source>
        <translation>Darunter eine Gruppe hinzufügen</translation>
    </message>
</context>
<context>
    <name>views::CriterionRowView</name>
    <message>
        <source>Property</source>
        <translation>Eigenschaft</translation>
    </message>
    <message>
        <source>Comparison</source>
        <translation>Vergleich</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>Aa</source>
        <translation>Aa</translation>
    </message>
    <message>
        <source>Match upper and lower case</source>
        <translation>Groß- und Kleinschreibung beachten</translation>
    </message>
    <message>
        <source>Minutes</source>
        <translation>Minuten</translation>
    </message>
    <message>
        <source> min</source>
        <translation> min</translation>
    </message>
    <message>
        <source>Number</source>
        <translation>Anzahl</translation>
    </message>
    <message>
        <source>Unit</source>
        <translation>Einheit</translation>
    </message>
</context>
<context>
    <name>views::DateField</name>
    <message>
        <source>None</source>
        <translation>Keine Angabe</translation>
    </message>
    <message>
        <source>Calendar</source>
        <translation>Kalender</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>This is not a date. Try &quot;tomorrow&quot;, &quot;fri 14:00&quot; or &quot;26 Nov&quot;.</source>
        <translation>Das ist kein Datum. Versuche „morgen“, „Freitag 14:00“ oder „26.11.“.</translation>
    </message>
</context>
<context>
    <name>views::DetailPane</name>
    <message>
        <source>Notes</source>
        <translation>Notizen</translation>
    </message>
    <message>
        <source>Completed</source>
        <translation>Erledigt</translation>
    </message>
    <message>
        <source>Title</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>Star</source>
        <translation>Stern</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Context</source>
        <translation>Kontext</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Zustand</translation>
    </message>
    <message>
        <source>Priority</source>
        <translation>Priorität</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Start</translation>
    </message>
    <message>
        <source>Due</source>
        <translation>Fällig</translation>
    </message>
    <message>
        <source>Reminder</source>
        <translation>Erinnerung</translation>
    </message>
    <message>
        <source>Repeat</source>
        <translation>Wiederholung</translation>
    </message>
    <message>
        <source>Length</source>
        <translation>Dauer</translation>
    </message>
    <message>
        <source>Tags</source>
        <translation>Schlagwörter</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keine Angabe</translation>
    </message>
    <message>
        <source>Complete</source>
        <translation>Erledigt</translation>
    </message>
    <message>
        <source>Reopen</source>
        <translation>Wieder öffnen</translation>
    </message>
    <message>
        <source>Add Star</source>
        <translation>Stern geben</translation>
    </message>
    <message>
        <source>Remove Star</source>
        <translation>Stern nehmen</translation>
    </message>
    <message>
        <source>Move to Folder</source>
        <translation>In den Ordner bewegen</translation>
    </message>
    <message>
        <source>Change Context</source>
        <translation>Kontext ändern</translation>
    </message>
    <message>
        <source>Change State</source>
        <translation>Zustand ändern</translation>
    </message>
    <message>
        <source>Change Priority</source>
        <translation>Priorität ändern</translation>
    </message>
    <message>
        <source>Change Start Date</source>
        <translation>Startdatum ändern</translation>
    </message>
    <message>
        <source>Change Due Date</source>
        <translation>Fälligkeit ändern</translation>
    </message>
    <message>
        <source>Change Reminder</source>
        <translation>Erinnerung ändern</translation>
    </message>
    <message>
        <source>Change Repeat</source>
        <translation>Wiederholung ändern</translation>
    </message>
    <message>
        <source>Select a task to see its details.</source>
        <translation>Wähle eine Aufgabe, um ihre Einzelheiten zu sehen.</translation>
    </message>
    <message>
        <source>%1 tasks selected</source>
        <translation>%1 Aufgaben ausgewählt</translation>
    </message>
    <message>
        <source>Added %1</source>
        <translation>Hinzugefügt: %1</translation>
    </message>
    <message>
        <source>Change Tags</source>
        <translation>Schlagwörter ändern</translation>
    </message>
    <message>
        <source>Edit Title</source>
        <translation>Titel bearbeiten</translation>
    </message>
    <message>
        <source>Edit Notes</source>
        <translation>Notizen bearbeiten</translation>
    </message>
    <message>
        <source>Change Length</source>
        <translation>Dauer ändern</translation>
    </message>
</context>
<context>
    <name>views::FirstRunController</name>
    <message>
        <source>Welcome</source>
        <translation>Willkommen</translation>
    </message>
    <message>
        <source>Welcome to Quelvin</source>
        <translation>Willkommen bei Quelvin</translation>
    </message>
    <message>
        <source>Your tasks stay on this computer. If you have an account at a service that speaks the Toodledo protocol, they can be kept the same there, too. You can set this up later.</source>
        <translation>Deine Aufgaben bleiben auf diesem Rechner. Wenn du ein Konto bei einem Dienst hast, der das Toodledo-Protokoll spricht, können sie auch dort auf demselben Stand sein. Das lässt sich auch später einrichten.</translation>
    </message>
    <message>
        <source>E-mail</source>
        <translation>E-Mail</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>Create Account</source>
        <translation>Konto anlegen</translation>
    </message>
    <message>
        <source>Test Connection</source>
        <translation>Verbindung prüfen</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>Connecting…</source>
        <translation>Verbinde …</translation>
    </message>
    <message>
        <source>Connection succeeded</source>
        <translation>Verbindung gelungen</translation>
    </message>
    <message>
        <source>Connection FAILED!</source>
        <translation>Verbindung FEHLGESCHLAGEN!</translation>
    </message>
    <message>
        <source>Server</source>
        <translation>Server</translation>
    </message>
    <message>
        <source>sync.example.org</source>
        <translation>sync.example.org</translation>
    </message>
    <message>
        <source>Test the connection to see whether the account is there.</source>
        <translation>Die Verbindung prüfen zeigt, ob es das Konto gibt.</translation>
    </message>
    <message>
        <source>Work Without an Account</source>
        <translation>Ohne Konto arbeiten</translation>
    </message>
    <message>
        <source>Kept in your keyring</source>
        <translation>Liegt im Schlüsselbund</translation>
    </message>
</context>
<context>
    <name>views::FoldersOutlineView</name>
    <message>
        <source>Lists</source>
        <translation>Listen</translation>
    </message>
</context>
<context>
    <name>views::ImageAndTextCell</name>
    <message>
        <source>Title of %1</source>
        <translation>Titel von %1</translation>
    </message>
</context>
<context>
    <name>views::KeptConditionView</name>
    <message>
        <source>There is no row for this condition. It is kept as it is.</source>
        <translation>Für diese Bedingung gibt es keine Zeile. Sie bleibt, wie sie ist.</translation>
    </message>
    <message>
        <source>Condition</source>
        <translation>Bedingung</translation>
    </message>
</context>
<context>
    <name>views::LocationPane</name>
    <message>
        <source>Use my location</source>
        <translation>Meinen Ort verwenden</translation>
    </message>
    <message>
        <source>Shows the tasks of the contexts that are less than a kilometre away. Your position stays on this computer; it is compared with the places of your contexts.</source>
        <translation>Zeigt die Aufgaben der Kontexte, die weniger als einen Kilometer entfernt sind. Ihre Position bleibt auf diesem Computer; sie wird mit den Orten Ihrer Kontexte verglichen.</translation>
    </message>
    <message>
        <source>The desktop</source>
        <translation>Vom Desktop</translation>
    </message>
    <message>
        <source>A receiver or recording (NMEA)</source>
        <translation>Von Empfänger oder Aufzeichnung (NMEA)</translation>
    </message>
    <message>
        <source>Position from</source>
        <translation>Position</translation>
    </message>
    <message>
        <source>Device or file</source>
        <translation>Gerät oder Datei</translation>
    </message>
    <message>
        <source>Choose…</source>
        <translation>Wählen …</translation>
    </message>
    <message>
        <source>Speed</source>
        <translation>Geschwindigkeit</translation>
    </message>
    <message>
        <source>%1 baud</source>
        <translation>%1 Baud</translation>
    </message>
    <message>
        <source>You are at %1.</source>
        <translation>Sie sind bei %1.</translation>
    </message>
</context>
<context>
    <name>views::MainWindow</name>
    <message>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Menu</source>
        <translation>Menü</translation>
    </message>
    <message>
        <source>New task</source>
        <translation>Neue Aufgabe</translation>
    </message>
    <message>
        <source>Add a task</source>
        <translation>Aufgabe hinzufügen</translation>
    </message>
    <message>
        <source>All tasks</source>
        <translation>Alle Aufgaben</translation>
    </message>
    <message>
        <source>Titles and notes with &quot;%1&quot;</source>
        <translation>Titel und Notizen mit „%1“</translation>
    </message>
    <message>
        <source>Tags</source>
        <translation>Schlagwörter</translation>
    </message>
    <message>
        <source>dddd d MMMM</source>
        <comment>today&apos;s date</comment>
        <translation>dddd, d. MMMM</translation>
    </message>
    <message>
        <source>1 task</source>
        <translation>1 Aufgabe</translation>
    </message>
    <message>
        <source>%1 tasks</source>
        <translation>%1 Aufgaben</translation>
    </message>
    <message>
        <source>%1 · synchronized %2</source>
        <translation>%1 · abgeglichen: %2</translation>
    </message>
    <message>
        <source>No task has these words in its title or notes.</source>
        <translation>Keine Aufgabe hat diese Wörter im Titel oder in den Notizen.</translation>
    </message>
    <message>
        <source>Tick tags at the left to see the tasks that carry any of them.</source>
        <translation>Kreuze links Schlagwörter an, um die Aufgaben zu sehen, die eines davon tragen.</translation>
    </message>
    <message>
        <source>Empty Trash</source>
        <translation>Papierkorb leeren</translation>
    </message>
    <message>
        <source>About Quelvin</source>
        <translation>Über Quelvin</translation>
    </message>
    <message>
        <source>Quelvin %1
Tasks, the getting-things-done way.</source>
        <translation>Quelvin %1
Aufgaben, damit Dinge getan werden.</translation>
    </message>
    <message>
        <source>Show Tag Browser</source>
        <translation>Schlagwörter zeigen</translation>
    </message>
    <message>
        <source>Turn location filtering on</source>
        <translation>Nach dem Ort filtern</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Folders and Contexts</source>
        <translation>Ordner und Kontexte</translation>
    </message>
    <message>
        <source>Tag Browser</source>
        <translation>Schlagwörter</translation>
    </message>
    <message>
        <source>Show Folders and Contexts view</source>
        <translation>Ordner und Kontexte zeigen</translation>
    </message>
    <message>
        <source>Turn location filtering off</source>
        <translation>Nicht mehr nach dem Ort filtern</translation>
    </message>
    <message>
        <source>Sync with Toodledo</source>
        <translation>Mit Toodledo abgleichen</translation>
    </message>
    <message>
        <source>(%1) %2</source>
        <translation>(%1) %2</translation>
    </message>
    <message>
        <source>At %1</source>
        <comment>the places where the user is</comment>
        <translation>Hier: %1</translation>
    </message>
</context>
<context>
    <name>views::ManagementWindow</name>
    <message>
        <source>Folders</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Contexts</source>
        <translation>Kontexte</translation>
    </message>
    <message>
        <source>Tags</source>
        <translation>Schlagwörter</translation>
    </message>
    <message>
        <source>Smart Folders</source>
        <translation>Intelligente Ordner</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Umbenennen</translation>
    </message>
    <message>
        <source>New Tag</source>
        <translation>Neues Schlagwort</translation>
    </message>
    <message>
        <source>new tag</source>
        <translation>neues Schlagwort</translation>
    </message>
    <message>
        <source>Delete Tag</source>
        <translation>Schlagwort löschen</translation>
    </message>
    <message>
        <source>Edit…</source>
        <translation>Bearbeiten …</translation>
    </message>
</context>
<context>
    <name>views::Picker</name>
    <message>
        <source>Find</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keine Angabe</translation>
    </message>
</context>
<context>
    <name>views::PreferencesWindow</name>
    <message>
        <source>Task list</source>
        <translation>Aufgabenliste</translation>
    </message>
    <message>
        <source>Details</source>
        <translation>Einzelheiten</translation>
    </message>
    <message>
        <source>Title, from</source>
        <translation>Überschrift, von</translation>
    </message>
    <message>
        <source>Title, to</source>
        <translation>Überschrift, bis</translation>
    </message>
    <message>
        <source>General</source>
        <translation>Allgemein</translation>
    </message>
    <message>
        <source>Colors</source>
        <translation>Farben</translation>
    </message>
    <message>
        <source>Sync</source>
        <translation>Abgleich</translation>
    </message>
    <message>
        <source>Columns</source>
        <translation>Spalten</translation>
    </message>
    <message>
        <source>Show completed tasks</source>
        <translation>Erledigte Aufgaben zeigen</translation>
    </message>
    <message>
        <source>Count Today in the badge</source>
        <translation>Heute im Zähler des Symbols</translation>
    </message>
    <message>
        <source>Count the Inbox in the badge</source>
        <translation>Eingang im Zähler des Symbols</translation>
    </message>
    <message>
        <source>As the desktop</source>
        <translation>Wie die Arbeitsumgebung</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>Hell</translation>
    </message>
    <message>
        <source>Dark</source>
        <translation>Dunkel</translation>
    </message>
    <message>
        <source>Appearance</source>
        <translation>Erscheinung</translation>
    </message>
    <message>
        <source>Show All Tips Again</source>
        <translation>Alle Hinweise wieder zeigen</translation>
    </message>
    <message>
        <source>Reset Colors</source>
        <translation>Farben zurücksetzen</translation>
    </message>
    <message>
        <source>Synchronize with Toodledo</source>
        <translation>Mit Toodledo abgleichen</translation>
    </message>
    <message>
        <source>When Quelvin starts</source>
        <translation>Wenn Quelvin startet</translation>
    </message>
    <message>
        <source>Never</source>
        <translation>Nie</translation>
    </message>
    <message>
        <source> minutes</source>
        <translation> Minuten</translation>
    </message>
    <message>
        <source>Repeat every</source>
        <translation>Wiederholen alle</translation>
    </message>
    <message>
        <source>E-mail</source>
        <translation>E-Mail</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>Server</source>
        <translation>Server</translation>
    </message>
    <message>
        <source>Test Connection</source>
        <translation>Verbindung prüfen</translation>
    </message>
    <message>
        <source>Connecting…</source>
        <translation>Verbinde …</translation>
    </message>
    <message>
        <source>Connection succeeded</source>
        <translation>Verbindung gelungen</translation>
    </message>
    <message>
        <source>Connection FAILED!</source>
        <translation>Verbindung FEHLGESCHLAGEN!</translation>
    </message>
    <message>
        <source>Send All Tasks as New…</source>
        <translation>Alle Aufgaben als neu senden …</translation>
    </message>
    <message>
        <source>Every task will be sent to the service as a new one at the next synchronization.</source>
        <translation>Jede Aufgabe wird beim nächsten Abgleich als neue an den Dienst gesendet.</translation>
    </message>
    <message>
        <source>Send All</source>
        <translation>Alle senden</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Shortcut</source>
        <translation>Tastenkürzel</translation>
    </message>
    <message>
        <source>Quick entry</source>
        <translation>Schnelleingabe</translation>
    </message>
    <message>
        <source>Opens a small window for a new task, whatever program you are working in. Click the button, then type the new keys; Backspace removes them.</source>
        <translation>Öffnet ein kleines Fenster für eine neue Aufgabe, gleich in welchem Programm Sie arbeiten. Klicken Sie auf den Knopf und drücken Sie dann die neuen Tasten; die Rücktaste entfernt sie.</translation>
    </message>
    <message>
        <source>Location</source>
        <translation>Ort</translation>
    </message>
    <message>
        <source>Apply this to smart folders, too</source>
        <translation>Auch auf intelligente Ordner anwenden</translation>
    </message>
    <message>
        <source>sync.example.org</source>
        <translation>sync.example.org</translation>
    </message>
    <message>
        <source>Kept in your keyring</source>
        <translation>Liegt im Schlüsselbund</translation>
    </message>
</context>
<context>
    <name>views::QuickEntry</name>
    <message>
        <source>Error: could not add task.</source>
        <translation>Fehler: Die Aufgabe wurde nicht angelegt.</translation>
    </message>
    <message>
        <source>Too many quick entries are open.</source>
        <translation>Es sind zu viele Schnelleingaben offen.</translation>
    </message>
</context>
<context>
    <name>views::QuickTaskController</name>
    <message>
        <source>Quick Entry</source>
        <translation>Schnelleingabe</translation>
    </message>
    <message>
        <source>Title</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>What is to be done?</source>
        <translation>Was ist zu tun?</translation>
    </message>
    <message>
        <source>Due</source>
        <translation>Fällig</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Add Task</source>
        <translation>Aufgabe anlegen</translation>
    </message>
    <message>
        <source>The text was too long for a title; its beginning was taken.</source>
        <translation>Der Text war zu lang für einen Titel; sein Anfang wurde übernommen.</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>No Folder</source>
        <translation>Kein Ordner</translation>
    </message>
    <message>
        <source>Context</source>
        <translation>Kontext</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Ohne</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Zustand</translation>
    </message>
    <message>
        <source>Priority</source>
        <translation>Priorität</translation>
    </message>
</context>
<context>
    <name>views::ShortcutRecorder</name>
    <message>
        <source>None</source>
        <translation>Ohne</translation>
    </message>
    <message>
        <source>With Ctrl, Alt or Super, please</source>
        <translation>Bitte mit Strg, Alt oder Super</translation>
    </message>
    <message>
        <source>Type the new keys…</source>
        <translation>Neue Tasten drücken …</translation>
    </message>
</context>
<context>
    <name>views::ShortcutsWindow</name>
    <message>
        <source>Keyboard Shortcuts</source>
        <translation>Tastenkürzel</translation>
    </message>
    <message>
        <source>Complete, in the list</source>
        <translation>Erledigt, in der Liste</translation>
    </message>
    <message>
        <source>Space</source>
        <translation>Leertaste</translation>
    </message>
    <message>
        <source>Edit in the list</source>
        <translation>In der Liste bearbeiten</translation>
    </message>
</context>
<context>
    <name>views::SmartFolderEditController</name>
    <message>
        <source>Smart Folder</source>
        <translation>Intelligenter Ordner</translation>
    </message>
    <message>
        <source>The saved conditions cannot be read. Saving replaces them.</source>
        <translation>Die gesicherten Bedingungen sind nicht lesbar. Sichern ersetzt sie.</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Ready-Made</source>
        <translation>Vorlagen</translation>
    </message>
    <message>
        <source>Start from a smart folder that many people use</source>
        <translation>Mit einem intelligenten Ordner beginnen, den viele benutzen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Sichern</translation>
    </message>
    <message>
        <source>1 task</source>
        <translation>1 Aufgabe</translation>
    </message>
    <message>
        <source>%1 tasks</source>
        <translation>%1 Aufgaben</translation>
    </message>
    <message>
        <source>%1 · %2</source>
        <translation>%1 · %2</translation>
    </message>
    <message>
        <source>only completed ones, as set in Preferences</source>
        <translation>nur erledigte, wie in den Einstellungen gewählt</translation>
    </message>
    <message>
        <source>only open ones, as set in Preferences</source>
        <translation>nur offene, wie in den Einstellungen gewählt</translation>
    </message>
    <message>
        <source>These are more conditions than can be saved.</source>
        <translation>Das sind mehr Bedingungen, als gesichert werden können.</translation>
    </message>
    <message>
        <source>Remove some of them.</source>
        <translation>Entfernen Sie einige davon.</translation>
    </message>
    <message>
        <source>Edit Smart Folder</source>
        <translation>Intelligenten Ordner bearbeiten</translation>
    </message>
</context>
<context>
    <name>views::TagBrowser</name>
    <message>
        <source>Tags</source>
        <translation>Schlagwörter</translation>
    </message>
</context>
<context>
    <name>views::TasksTableView</name>
    <message>
        <source>Tasks</source>
        <translation>Aufgaben</translation>
    </message>
    <message>
        <source>%1 tasks</source>
        <translation>%1 Aufgaben</translation>
    </message>
</context>
<context>
    <name>views::TipPlaceHolderView</name>
    <message>
        <source>Do not show this tip again</source>
        <translation>Diesen Hinweis nicht mehr zeigen</translation>
    </message>
</context>
<context>
    <name>views::TokenField</name>
    <message>
        <source>Add a tag</source>
        <translation>Schlagwort hinzufügen</translation>
    </message>
    <message>
        <source>Remove &quot;%1&quot;</source>
        <translation>„%1“ entfernen</translation>
    </message>
</context>
<context>
    <name>views::TrayIcon</name>
    <message>
        <source>Quelvin: %1 waiting</source>
        <translation>Quelvin: %1 warten</translation>
    </message>
</context>
</TS>
