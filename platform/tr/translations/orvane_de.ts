<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>Application</name>
    <message>
        <source>Nothing was changed: %1 is as it was.</source>
        <translation>Nichts wurde geändert: %1 ist, wie es war.</translation>
    </message>
</context>
<context>
    <name>DeriveMenu</name>
    <message>
        <source>&amp;Derive</source>
        <translation>A&amp;bleiten</translation>
    </message>
    <message>
        <source>, by %1</source>
        <translation>, über %1</translation>
    </message>
</context>
<context>
    <name>EditingSign</name>
    <message>
        <source>Read Only</source>
        <translation>Nur Lesen</translation>
    </message>
    <message>
        <source>The database is open for reading only. Close it and open it again to read and write.</source>
        <translation>Die Datenbank ist nur zum Lesen geöffnet. Schließen Sie sie und öffnen Sie sie erneut zum Lesen und Schreiben.</translation>
    </message>
    <message>
        <source>The file of this table can&apos;t be written.</source>
        <translation>Die Datei dieser Tabelle kann nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>Editing Off</source>
        <translation>Ändern aus</translation>
    </message>
    <message>
        <source>Cells can&apos;t be typed into. Click here to allow edits.</source>
        <translation>In Zellen lässt sich nichts eintippen. Ein Klick hier erlaubt Änderungen.</translation>
    </message>
    <message>
        <source>Editing On</source>
        <translation>Ändern an</translation>
    </message>
    <message>
        <source>What is typed into cells goes into the file. Click here to forbid edits.</source>
        <translation>Was in Zellen eingetippt wird, geht in die Datei. Ein Klick hier verbietet Änderungen.</translation>
    </message>
</context>
<context>
    <name>LanguageMenu</name>
    <message>
        <source>&amp;Display Language</source>
        <translation>Anzeigesprac&amp;he</translation>
    </message>
    <message>
        <source>As the &amp;System</source>
        <translation>Wie das &amp;System</translation>
    </message>
    <message>
        <source>The language changes when ovedit is started the next time.</source>
        <translation>Die Sprache wechselt, wenn ovedit das nächste Mal gestartet wird.</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>%1: the file of table %2 is gone (%3), and so is its tab. Put the file back, and the tab comes back.</source>
        <translation>%1: Die Datei der Tabelle %2 ist verschwunden (%3) und mit ihr der Tab. Liegt die Datei wieder dort, kommt auch der Tab zurück.</translation>
    </message>
    <message>
        <source>%1 – ovedit</source>
        <translation>%1 – ovedit</translation>
    </message>
    <message>
        <source>Font Size</source>
        <translation>Schriftgröße</translation>
    </message>
    <message>
        <source>Size of the table font in points:</source>
        <translation>Schriftgröße der Tabellen in Punkt:</translation>
    </message>
    <message>
        <source>Update Interval</source>
        <translation>Aktualisierungsintervall</translation>
    </message>
    <message>
        <source>Seconds between looks for changed tables (0: don&apos;t look):</source>
        <translation>Sekunden zwischen den Suchen nach geänderten Tabellen (0: nicht suchen):</translation>
    </message>
    <message>
        <source>About ovedit</source>
        <translation>Über ovedit</translation>
    </message>
    <message>
        <source>&lt;h3&gt;ovedit %1&lt;/h3&gt;&lt;p&gt;Looks at the tables of flat-file scientific databases: every table a tab, every field and record with its description.&lt;/p&gt;&lt;p&gt;Part of Orvane.&lt;/p&gt;</source>
        <translation>&lt;h3&gt;ovedit %1&lt;/h3&gt;&lt;p&gt;Zeigt die Tabellen wissenschaftlicher Datenbanken aus einfachen Dateien: jede Tabelle ein Tab, jedes Feld und jeder Datensatz mit seiner Beschreibung.&lt;/p&gt;&lt;p&gt;Teil von Orvane.&lt;/p&gt;</translation>
    </message>
</context>
<context>
    <name>MapSelection</name>
    <message>
        <source>The table shows the first %1 of the %2 rows selected.</source>
        <translation>Die Tabelle zeigt die ersten %1 der %2 ausgewählten Zeilen.</translation>
    </message>
</context>
<context>
    <name>Menus</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>Open &amp;Recent</source>
        <translation>Zuletzt &amp;geöffnet</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Window</source>
        <translation>&amp;Fenster</translation>
    </message>
    <message>
        <source>&amp;Go to Table</source>
        <translation>&amp;Zu Tabelle gehen</translation>
    </message>
    <message>
        <source>&amp;Databases</source>
        <translation>&amp;Datenbanken</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;Font Size</source>
        <translation>&amp;Schriftgröße</translation>
    </message>
    <message>
        <source>&amp;Close Product</source>
        <translation>Produkt s&amp;chließen</translation>
    </message>
    <message>
        <source>&amp;Close View</source>
        <translation>Sicht s&amp;chließen</translation>
    </message>
    <message>
        <source>Time &amp;Zone (%1)...</source>
        <translation>&amp;Zeitzone (%1)...</translation>
    </message>
    <message>
        <source>&amp;Clear List</source>
        <translation>Liste &amp;leeren</translation>
    </message>
    <message>
        <source>(no database)</source>
        <translation>(keine Datenbank)</translation>
    </message>
</context>
<context>
    <name>NewDatabaseDialog</name>
    <message>
        <source>New Database</source>
        <translation>Neue Datenbank</translation>
    </message>
    <message>
        <source>What the names of its files begin with</source>
        <translation>Womit die Namen ihrer Dateien beginnen</translation>
    </message>
    <message>
        <source>One line that tells what it holds</source>
        <translation>Eine Zeile, die sagt, was sie enthält</translation>
    </message>
    <message>
        <source>Table</source>
        <translation>Tabelle</translation>
    </message>
    <message>
        <source>Description</source>
        <translation>Beschreibung</translation>
    </message>
    <message>
        <source>&amp;Browse...</source>
        <translation>D&amp;urchsuchen...</translation>
    </message>
    <message>
        <source>From a &amp;File...</source>
        <translation>Aus einer &amp;Datei...</translation>
    </message>
    <message>
        <source>&amp;Create</source>
        <translation>&amp;Anlegen</translation>
    </message>
    <message>
        <source>&amp;Name:</source>
        <translation>&amp;Name:</translation>
    </message>
    <message>
        <source>F&amp;older:</source>
        <translation>&amp;Ordner:</translation>
    </message>
    <message>
        <source>&amp;Description:</source>
        <translation>&amp;Beschreibung:</translation>
    </message>
    <message>
        <source>&amp;Schema:</source>
        <translation>&amp;Schema:</translation>
    </message>
    <message>
        <source>Folder of the New Database</source>
        <translation>Ordner der neuen Datenbank</translation>
    </message>
    <message>
        <source>Choose a Schema</source>
        <translation>Schema wählen</translation>
    </message>
    <message>
        <source>Schemas (*.yaml)</source>
        <translation>Schemata (*.yaml)</translation>
    </message>
    <message>
        <source>Fields: %1</source>
        <translation>Felder: %1</translation>
    </message>
    <message>
        <source>Give the database a name.</source>
        <translation>Geben Sie der Datenbank einen Namen.</translation>
    </message>
    <message>
        <source>A name has no slash in it; the folder stands below.</source>
        <translation>Ein Name hat keinen Schrägstrich; der Ordner steht darunter.</translation>
    </message>
    <message>
        <source>There is no such folder.</source>
        <translation>Diesen Ordner gibt es nicht.</translation>
    </message>
    <message>
        <source>The folder cannot be written.</source>
        <translation>In den Ordner kann nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>There is a file of that name already.</source>
        <translation>Eine Datei dieses Namens gibt es schon.</translation>
    </message>
    <message>
        <source>No schema is installed; choose a file.</source>
        <translation>Kein Schema ist installiert; wählen Sie eine Datei.</translation>
    </message>
    <message>
        <source>The schema cannot be used.</source>
        <translation>Das Schema ist nicht zu gebrauchen.</translation>
    </message>
</context>
<context>
    <name>NoticeBar</name>
    <message>
        <source>&amp;Details...</source>
        <translation>&amp;Einzelheiten...</translation>
    </message>
    <message>
        <source>Hide this notice</source>
        <translation>Diesen Hinweis ausblenden</translation>
    </message>
    <message>
        <source>1 problem was found. Everything else can be used.</source>
        <translation>1 Problem wurde gefunden. Alles andere ist benutzbar.</translation>
    </message>
    <message numerus="yes">
        <source>%n problems were found. Everything else can be used.</source>
        <translation>
            <numerusform>%n Problem wurde gefunden. Alles andere ist benutzbar.</numerusform>
            <numerusform>%n Probleme wurden gefunden. Alles andere ist benutzbar.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>OpenDialog</name>
    <message>
        <source>&amp;Read only</source>
        <translation>Nur &amp;lesen</translation>
    </message>
    <message>
        <source>Read and &amp;write</source>
        <translation>Lesen und &amp;schreiben</translation>
    </message>
    <message>
        <source>Open Database</source>
        <translation>Datenbank öffnen</translation>
    </message>
    <message>
        <source>Path of a database, or of one of its tables</source>
        <translation>Pfad einer Datenbank oder einer ihrer Tabellen</translation>
    </message>
    <message>
        <source>&amp;Database:</source>
        <translation>&amp;Datenbank:</translation>
    </message>
    <message>
        <source>&amp;Browse...</source>
        <translation>D&amp;urchsuchen...</translation>
    </message>
    <message>
        <source>Opened re&amp;cently:</source>
        <translation>Zuletzt &amp;geöffnet:</translation>
    </message>
    <message>
        <source>Open for:</source>
        <translation>Öffnen zum:</translation>
    </message>
    <message>
        <source>Choose a Database or One of Its Tables</source>
        <translation>Eine Datenbank oder eine ihrer Tabellen wählen</translation>
    </message>
</context>
<context>
    <name>OperationProgress</name>
    <message>
        <source>the database</source>
        <translation>der Datenbank</translation>
    </message>
</context>
<context>
    <name>OvEventMap</name>
    <message>
        <source>Event map</source>
        <translation>Erdbebenkarte</translation>
    </message>
    <message>
        <source>The map can&apos;t be drawn: %1</source>
        <translation>Die Karte kann nicht gezeichnet werden: %1</translation>
    </message>
    <message>
        <source>No events.</source>
        <translation>Keine Erdbeben.</translation>
    </message>
    <message>
        <source>Reading events: %1 %</source>
        <translation>Erdbeben werden gelesen: %1 %</translation>
    </message>
    <message>
        <source>Placing events</source>
        <translation>Erdbeben werden verortet</translation>
    </message>
    <message>
        <source>Events: %1</source>
        <translation>Erdbeben: %1</translation>
    </message>
    <message>
        <source>selected: %1</source>
        <translation>ausgewählt: %1</translation>
    </message>
    <message>
        <source>beyond the map&apos;s range: %1</source>
        <translation>außerhalb des Kartenbereichs: %1</translation>
    </message>
    <message>
        <source>of unknown magnitude (smallest): %1</source>
        <translation>mit unbekannter Magnitude (am kleinsten): %1</translation>
    </message>
    <message>
        <source>without coordinates: %1</source>
        <translation>ohne Koordinaten: %1</translation>
    </message>
    <message>
        <source>with impossible coordinates: %1</source>
        <translation>mit unmöglichen Koordinaten: %1</translation>
    </message>
    <message>
        <source>unreadable: %1</source>
        <translation>unlesbar: %1</translation>
    </message>
    <message>
        <source>Record %1</source>
        <translation>Datensatz %1</translation>
    </message>
    <message>
        <source>The record can&apos;t be read any more.</source>
        <translation>Der Datensatz ist nicht mehr lesbar.</translation>
    </message>
    <message numerus="yes">
        <source>and %n more here</source>
        <translation>
            <numerusform>und hier noch %n weiteres</numerusform>
            <numerusform>und hier noch %n weitere</numerusform>
        </translation>
    </message>
    <message>
        <source>Magnitude</source>
        <translation>Magnitude</translation>
    </message>
    <message>
        <source>Depth (km)</source>
        <translation>Tiefe (km)</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>unbekannt</translation>
    </message>
    <message>
        <source>The database %1 has no table &quot;origin&quot;.</source>
        <translation>Die Datenbank %1 hat keine Tabelle „origin“.</translation>
    </message>
    <message>
        <source>%1 km</source>
        <translation>%1 km</translation>
    </message>
</context>
<context>
    <name>OvEventView</name>
    <message>
        <source>The events can&apos;t be read: the memory doesn&apos;t suffice.</source>
        <translation>Die Erdbeben können nicht gelesen werden: Der Speicher reicht nicht aus.</translation>
    </message>
</context>
<context>
    <name>OvTranslation</name>
    <message>
        <source>The database %1 is open for reading only, and stays so.

To open it for reading and writing, close its window first.</source>
        <translation>Die Datenbank %1 ist nur zum Lesen geöffnet und bleibt es.

Um sie zum Lesen und Schreiben zu öffnen, schließen Sie zuerst ihr Fenster.</translation>
    </message>
    <message>
        <source>The database library gave no reason.</source>
        <translation>Die Datenbankbibliothek hat keinen Grund genannt.</translation>
    </message>
    <message>
        <source>The database %1 can&apos;t be opened.

%2

A database is opened by its descriptor, or by one of its table files.</source>
        <translation>Die Datenbank %1 kann nicht geöffnet werden.

%2

Eine Datenbank wird über ihren Deskriptor oder eine ihrer Tabellendateien geöffnet.</translation>
    </message>
    <message>
        <source>&amp;Tooltips</source>
        <translation>&amp;Tooltips</translation>
    </message>
    <message>
        <source>Describe tables, fields and records when the mouse rests on them</source>
        <translation>Tabellen, Felder und Datensätze beschreiben, wenn die Maus darauf ruht</translation>
    </message>
    <message>
        <source>&amp;Readable Times</source>
        <translation>&amp;Lesbare Zeiten</translation>
    </message>
    <message>
        <source>Show times as dates instead of epoch seconds</source>
        <translation>Zeiten als Datum statt als Epochensekunden zeigen</translation>
    </message>
    <message>
        <source>Times in &amp;Local Zone</source>
        <translation>Zeiten in &amp;Ortszeit</translation>
    </message>
    <message>
        <source>Show times in the chosen time zone instead of UTC</source>
        <translation>Zeiten in der gewählten Zeitzone statt in UTC zeigen</translation>
    </message>
    <message>
        <source>Raw &amp;Nulls</source>
        <translation>&amp;Rohe Nullwerte</translation>
    </message>
    <message>
        <source>Show missing values as they are stored instead of empty cells</source>
        <translation>Fehlende Werte zeigen, wie sie gespeichert sind, statt leerer Zellen</translation>
    </message>
    <message>
        <source>Colo&amp;ured Nulls</source>
        <translation>&amp;Nullwerte einfärben</translation>
    </message>
    <message>
        <source>Mark missing values by the colour of their cells</source>
        <translation>Fehlende Werte durch die Farbe ihrer Zellen kennzeichnen</translation>
    </message>
    <message>
        <source>Coloured &amp;Blanks</source>
        <translation>Leere &amp;Werte einfärben</translation>
    </message>
    <message>
        <source>Mark blank values by the colour of their cells</source>
        <translation>Leere Werte durch die Farbe ihrer Zellen kennzeichnen</translation>
    </message>
    <message>
        <source>&amp;Empty Columns</source>
        <translation>L&amp;eere Spalten</translation>
    </message>
    <message>
        <source>Show the columns that hold no values, too</source>
        <translation>Auch Spalten ohne Werte zeigen</translation>
    </message>
    <message>
        <source>&amp;Ask for View Names</source>
        <translation>Na&amp;men neuer Sichten erfragen</translation>
    </message>
    <message>
        <source>Ask how each derived view is to be called</source>
        <translation>Bei jeder abgeleiteten Sicht fragen, wie sie heißen soll</translation>
    </message>
    <message>
        <source>&amp;Striped Rows</source>
        <translation>&amp;Gestreifte Zeilen</translation>
    </message>
    <message>
        <source>Shade every other row</source>
        <translation>Jede zweite Zeile abtönen</translation>
    </message>
    <message>
        <source>%1: can&apos;t be read as a parameter file</source>
        <translation>%1: kann nicht als Parameterdatei gelesen werden</translation>
    </message>
    <message>
        <source>&amp;Subset...</source>
        <translation>&amp;Teilmenge...</translation>
    </message>
    <message>
        <source>The rows for which an expression is true</source>
        <translation>Die Zeilen, für die ein Ausdruck wahr ist</translation>
    </message>
    <message>
        <source>S&amp;ort...</source>
        <translation>&amp;Sortieren...</translation>
    </message>
    <message>
        <source>All rows in the order of some fields</source>
        <translation>Alle Zeilen in der Reihenfolge einiger Felder</translation>
    </message>
    <message>
        <source>&amp;Group...</source>
        <translation>&amp;Gruppieren...</translation>
    </message>
    <message>
        <source>One row for all rows that are equal in some fields</source>
        <translation>Eine Zeile für alle Zeilen, die in einigen Feldern übereinstimmen</translation>
    </message>
    <message>
        <source>&amp;Ungroup</source>
        <translation>Gruppen &amp;auflösen</translation>
    </message>
    <message>
        <source>The rows that the groups are made of</source>
        <translation>Die Zeilen, aus denen die Gruppen bestehen</translation>
    </message>
    <message>
        <source>&amp;Join</source>
        <translation>&amp;Verbund mit</translation>
    </message>
    <message>
        <source>Each row beside the rows of another table that belong to it</source>
        <translation>Jede Zeile neben den zugehörigen Zeilen einer anderen Tabelle</translation>
    </message>
    <message>
        <source>The rows of %1 beside those of %2 that belong to them</source>
        <translation>Die Zeilen von %1 neben den zugehörigen von %2</translation>
    </message>
    <message>
        <source>Ou&amp;ter Join</source>
        <translation>Ä&amp;ußerer Verbund mit</translation>
    </message>
    <message>
        <source>As a join; rows without a match stay, beside a row of nulls</source>
        <translation>Wie ein Verbund; Zeilen ohne Entsprechung bleiben, neben einer Zeile von Nullwerten</translation>
    </message>
    <message>
        <source>All rows of %1, beside those of %2 that belong to them or a row of nulls</source>
        <translation>Alle Zeilen von %1 neben den zugehörigen von %2 oder einer Zeile von Nullwerten</translation>
    </message>
    <message>
        <source>&amp;Left Join</source>
        <translation>&amp;Linker Verbund mit</translation>
    </message>
    <message>
        <source>As a join, with the other table first: in the order of its rows</source>
        <translation>Wie ein Verbund, die andere Tabelle zuerst: in der Reihenfolge ihrer Zeilen</translation>
    </message>
    <message>
        <source>The rows of %2, in order, beside those of %1 that belong to them</source>
        <translation>Die Zeilen von %2 in ihrer Reihenfolge neben den zugehörigen von %1</translation>
    </message>
    <message>
        <source>&amp;No Join</source>
        <translation>&amp;Ohne Entsprechung in</translation>
    </message>
    <message>
        <source>The rows that have no match in another table</source>
        <translation>Die Zeilen ohne Entsprechung in einer anderen Tabelle</translation>
    </message>
    <message>
        <source>The rows of %1 that have no match in %2</source>
        <translation>Die Zeilen von %1 ohne Entsprechung in %2</translation>
    </message>
    <message>
        <source>T&amp;heta Join</source>
        <translation>T&amp;heta-Verbund mit</translation>
    </message>
    <message>
        <source>The pairs of rows for which an expression is true</source>
        <translation>Die Zeilenpaare, für die ein Ausdruck wahr ist</translation>
    </message>
    <message>
        <source>The pairs of rows of %1 and %2 for which an expression is true</source>
        <translation>Die Zeilenpaare von %1 und %2, für die ein Ausdruck wahr ist</translation>
    </message>
    <message>
        <source>Se&amp;ver</source>
        <translation>Tabelle a&amp;btrennen</translation>
    </message>
    <message>
        <source>The view without one of its tables</source>
        <translation>Die Sicht ohne eine ihrer Tabellen</translation>
    </message>
    <message>
        <source>%1 without %2</source>
        <translation>%1 ohne %2</translation>
    </message>
    <message>
        <source>Se&amp;parate</source>
        <translation>Tabelle he&amp;rauslösen</translation>
    </message>
    <message>
        <source>The rows of one table that occur in the view</source>
        <translation>Die Zeilen einer Tabelle, die in der Sicht vorkommen</translation>
    </message>
    <message>
        <source>The rows of %2 that occur in %1</source>
        <translation>Die Zeilen von %2, die in %1 vorkommen</translation>
    </message>
    <message>
        <source>&amp;Open...</source>
        <translation>Ö&amp;ffnen...</translation>
    </message>
    <message>
        <source>Open a database</source>
        <translation>Eine Datenbank öffnen</translation>
    </message>
    <message>
        <source>Save &amp;As...</source>
        <translation>Speichern &amp;unter...</translation>
    </message>
    <message>
        <source>Save the table shown as text, a spreadsheet, a picture, a view or a new database</source>
        <translation>Die gezeigte Tabelle als Text, Tabellenblatt, Bild, Sicht oder neue Datenbank speichern</translation>
    </message>
    <message>
        <source>&amp;Close Window</source>
        <translation>Fenster s&amp;chließen</translation>
    </message>
    <message>
        <source>Close this window and its database</source>
        <translation>Dieses Fenster und seine Datenbank schließen</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>Close all windows</source>
        <translation>Alle Fenster schließen</translation>
    </message>
    <message>
        <source>&amp;Larger</source>
        <translation>&amp;Größer</translation>
    </message>
    <message>
        <source>&amp;Smaller</source>
        <translation>&amp;Kleiner</translation>
    </message>
    <message>
        <source>S&amp;tandard</source>
        <translation>&amp;Standard</translation>
    </message>
    <message>
        <source>S&amp;et...</source>
        <translation>&amp;Wählen...</translation>
    </message>
    <message>
        <source>Time &amp;Zone...</source>
        <translation>&amp;Zeitzone...</translation>
    </message>
    <message>
        <source>Choose the zone in which local times are shown</source>
        <translation>Die Zone wählen, in der Ortszeiten gezeigt werden</translation>
    </message>
    <message>
        <source>Update &amp;Interval...</source>
        <translation>&amp;Aktualisierungsintervall...</translation>
    </message>
    <message>
        <source>Say how often to look for changed tables</source>
        <translation>Festlegen, wie oft nach geänderten Tabellen gesucht wird</translation>
    </message>
    <message>
        <source>Arran&amp;ge Columns...</source>
        <translation>S&amp;palten anordnen...</translation>
    </message>
    <message>
        <source>Choose the columns shown and their order</source>
        <translation>Die gezeigten Spalten und ihre Reihenfolge wählen</translation>
    </message>
    <message>
        <source>Go to Ro&amp;w...</source>
        <translation>Zu Ze&amp;ile gehen...</translation>
    </message>
    <message>
        <source>Scroll to a row by its number</source>
        <translation>Eine Zeile nach ihrer Nummer ansteuern</translation>
    </message>
    <message>
        <source>Event &amp;Map</source>
        <translation>Erdbeben&amp;karte</translation>
    </message>
    <message>
        <source>Show the events of the database on a map</source>
        <translation>Die Erdbeben der Datenbank auf einer Karte zeigen</translation>
    </message>
    <message>
        <source>Look for &amp;Changes</source>
        <translation>Nach Än&amp;derungen suchen</translation>
    </message>
    <message>
        <source>Look now for changed tables</source>
        <translation>Jetzt nach geänderten Tabellen suchen</translation>
    </message>
    <message>
        <source>&amp;Next Tab</source>
        <translation>&amp;Nächster Tab</translation>
    </message>
    <message>
        <source>P&amp;revious Tab</source>
        <translation>&amp;Vorheriger Tab</translation>
    </message>
    <message>
        <source>&amp;Close View</source>
        <translation>Sicht s&amp;chließen</translation>
    </message>
    <message>
        <source>Close the view or product shown</source>
        <translation>Die gezeigte Sicht oder das gezeigte Produkt schließen</translation>
    </message>
    <message>
        <source>&amp;Schema Documentation</source>
        <translation>&amp;Schema-Dokumentation</translation>
    </message>
    <message>
        <source>Every table and field of the schema, described</source>
        <translation>Alle Tabellen und Felder des Schemas mit Beschreibung</translation>
    </message>
    <message>
        <source>&amp;Problems...</source>
        <translation>&amp;Probleme...</translation>
    </message>
    <message>
        <source>What the libraries have complained about</source>
        <translation>Was die Bibliotheken beanstandet haben</translation>
    </message>
    <message>
        <source>&amp;About ovedit</source>
        <translation>Ü&amp;ber ovedit</translation>
    </message>
    <message>
        <source>&amp;Tables</source>
        <translation>&amp;Tabellen</translation>
    </message>
    <message>
        <source>&amp;Views</source>
        <translation>&amp;Sichten</translation>
    </message>
    <message>
        <source>&amp;Products</source>
        <translation>&amp;Produkte</translation>
    </message>
    <message>
        <source>Testing the rows of %1</source>
        <translation>Zeilen von %1 werden geprüft</translation>
    </message>
    <message>
        <source>The subset of %1 was cancelled.</source>
        <translation>Die Teilmenge von %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Sorting the rows of %1</source>
        <translation>Zeilen von %1 werden sortiert</translation>
    </message>
    <message>
        <source>Sorting %1 was cancelled.</source>
        <translation>Das Sortieren von %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Grouping the rows of %1</source>
        <translation>Zeilen von %1 werden gruppiert</translation>
    </message>
    <message>
        <source>Grouping %1 was cancelled.</source>
        <translation>Das Gruppieren von %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Ungrouping the rows of %1</source>
        <translation>Gruppen von %1 werden aufgelöst</translation>
    </message>
    <message>
        <source>Ungrouping %1 was cancelled.</source>
        <translation>Das Auflösen der Gruppen von %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Joining %1</source>
        <translation>Verbund mit %1 wird gebildet</translation>
    </message>
    <message>
        <source>Joining %1 was cancelled.</source>
        <translation>Der Verbund mit %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Looking for rows of %1 without a match</source>
        <translation>Zeilen von %1 ohne Entsprechung werden gesucht</translation>
    </message>
    <message>
        <source>The no-join of %1 was cancelled.</source>
        <translation>Die Suche nach Zeilen von %1 ohne Entsprechung wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Testing pairs of rows of %1</source>
        <translation>Zeilenpaare von %1 werden geprüft</translation>
    </message>
    <message>
        <source>The theta join of %1 was cancelled.</source>
        <translation>Der Theta-Verbund von %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Severing a table from %1</source>
        <translation>Eine Tabelle wird von %1 abgetrennt</translation>
    </message>
    <message>
        <source>Severing a table from %1 was cancelled.</source>
        <translation>Das Abtrennen einer Tabelle von %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Separating a table from %1</source>
        <translation>Eine Tabelle wird aus %1 herausgelöst</translation>
    </message>
    <message>
        <source>Separating a table from %1 was cancelled.</source>
        <translation>Das Herauslösen einer Tabelle aus %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Writing the rows of %1</source>
        <translation>Zeilen von %1 werden geschrieben</translation>
    </message>
    <message>
        <source>Saving %1 was cancelled.</source>
        <translation>Das Speichern von %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Saving the view %1</source>
        <translation>Sicht %1 wird gespeichert</translation>
    </message>
    <message>
        <source>Making a database of the records of %1</source>
        <translation>Aus den Datensätzen von %1 wird eine Datenbank gebildet</translation>
    </message>
    <message>
        <source>Writing the rows of %1 to a spreadsheet</source>
        <translation>Zeilen von %1 werden in ein Tabellenblatt geschrieben</translation>
    </message>
    <message>
        <source>Taking marked rows out of %1</source>
        <translation>Vorgemerkte Zeilen werden aus %1 entfernt</translation>
    </message>
    <message>
        <source>Crunching %1 was cancelled.</source>
        <translation>Das Verdichten von %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Searching %1</source>
        <translation>%1 wird durchsucht</translation>
    </message>
    <message>
        <source>Searching %1 was cancelled.</source>
        <translation>Das Durchsuchen von %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Working on %1</source>
        <translation>%1 wird bearbeitet</translation>
    </message>
    <message>
        <source>Working on %1 was cancelled.</source>
        <translation>Die Arbeit an %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>&amp;Add Rows...</source>
        <translation>Zeilen &amp;hinzufügen...</translation>
    </message>
    <message>
        <source>Put a new row together in the row viewer and add it</source>
        <translation>Im Zeilenfenster eine neue Zeile zusammenstellen und hinzufügen</translation>
    </message>
    <message>
        <source>&amp;Mark Selected Rows For Deletion</source>
        <translation>Ausgewählte Zeilen zum &amp;Löschen vormerken</translation>
    </message>
    <message>
        <source>Empty the records of the selected rows; crunching the table removes them</source>
        <translation>Die Datensätze der ausgewählten Zeilen leeren; das Verdichten der Tabelle entfernt sie</translation>
    </message>
    <message>
        <source>&amp;Crunch Table</source>
        <translation>Tabelle ver&amp;dichten</translation>
    </message>
    <message>
        <source>Remove the empty records of the table</source>
        <translation>Die leeren Datensätze der Tabelle entfernen</translation>
    </message>
    <message>
        <source>Remove the empty records of &apos;%1&apos;? The records behind them get other numbers.</source>
        <translation>Die leeren Datensätze von „%1“ entfernen? Die Datensätze dahinter bekommen andere Nummern.</translation>
    </message>
    <message>
        <source>&amp;Delete Selected Rows From View</source>
        <translation>&amp;Ausgewählte Zeilen aus der Sicht nehmen</translation>
    </message>
    <message>
        <source>Take the selected rows out of the view; the records stay</source>
        <translation>Die ausgewählten Zeilen aus der Sicht nehmen; die Datensätze bleiben</translation>
    </message>
    <message>
        <source>Delete Other &amp;Visible Rows From View</source>
        <translation>Andere &amp;sichtbare Zeilen aus der Sicht nehmen</translation>
    </message>
    <message>
        <source>Of the rows on the screen keep the selected ones; the records stay</source>
        <translation>Von den Zeilen auf dem Bildschirm die ausgewählten behalten; die Datensätze bleiben</translation>
    </message>
    <message>
        <source>Delete All &amp;Other Rows From View</source>
        <translation>Alle anderen Zeilen aus der Sicht &amp;nehmen</translation>
    </message>
    <message>
        <source>Keep the selected rows alone in the view; the records stay</source>
        <translation>Allein die ausgewählten Zeilen in der Sicht behalten; die Datensätze bleiben</translation>
    </message>
    <message>
        <source>%1: the picture can&apos;t be written: %2</source>
        <translation>%1: Das Bild kann nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>Not stored: %1</source>
        <translation>Nicht gespeichert: %1</translation>
    </message>
    <message>
        <source>Expressions used before (Up, Down)</source>
        <translation>Früher benutzte Ausdrücke (auf, ab)</translation>
    </message>
    <message>
        <source>Font size must be an integer between 4 and 72</source>
        <translation>Die Schriftgröße muss eine ganze Zahl zwischen 4 und 72 sein</translation>
    </message>
    <message>
        <source> -- </source>
        <translation> – </translation>
    </message>
    <message>
        <source>ignoring requested size of &apos;%1&apos; and setting to 10</source>
        <translation>die gewünschte Größe „%1“ wird übergangen und 10 gesetzt</translation>
    </message>
    <message>
        <source>Get View Name</source>
        <translation>Name der Sicht</translation>
    </message>
    <message>
        <source>View name</source>
        <translation>Name der Sicht</translation>
    </message>
    <message>
        <source>:</source>
        <translation>:</translation>
    </message>
    <message>
        <source>result has no records</source>
        <translation>Das Ergebnis enthält keine Datensätze</translation>
    </message>
    <message>
        <source>Show fields</source>
        <translation>Felder zeigen</translation>
    </message>
    <message>
        <source>Row Number</source>
        <translation>Zeilennummer</translation>
    </message>
    <message>
        <source>Save As</source>
        <translation>Speichern unter</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>&apos; -- not making an event map</source>
        <translation>“ – es wird keine Erdbebenkarte gezeichnet</translation>
    </message>
    <message>
        <source>ovedit currently supports only one map at a time</source>
        <translation>ovedit kann zurzeit nur eine Karte zugleich zeigen</translation>
    </message>
    <message>
        <source>Failed to lookup &apos;origin&apos; table in database &apos;</source>
        <translation>Die Tabelle „origin“ ließ sich nicht finden in der Datenbank „</translation>
    </message>
    <message>
        <source>No &apos;origin&apos; table found in database &apos;</source>
        <translation>Es gibt keine Tabelle „origin“ in der Datenbank „</translation>
    </message>
    <message>
        <source>Events Map</source>
        <translation>Erdbebenkarte</translation>
    </message>
    <message>
        <source>%1 Row</source>
        <translation>%1 Zeile</translation>
    </message>
    <message>
        <source>%1 Rows</source>
        <translation>%1 Zeilen</translation>
    </message>
    <message>
        <source>Table &apos;%1&apos; updated</source>
        <translation>Tabelle „%1“ geändert</translation>
    </message>
    <message>
        <source>%1 ago</source>
        <translation>vor %1</translation>
    </message>
    <message>
        <source>&lt;Update tracking disabled&gt;</source>
        <translation>&lt;Änderungen werden nicht verfolgt&gt;</translation>
    </message>
    <message>
        <source>%1 updated</source>
        <translation>%1 aktualisiert</translation>
    </message>
    <message>
        <source>ovedit Row Viewer</source>
        <translation>ovedit – Zeilenfenster</translation>
    </message>
    <message>
        <source>Row index</source>
        <translation>Zeilennummer</translation>
    </message>
    <message>
        <source>Previous row</source>
        <translation>Vorige Zeile</translation>
    </message>
    <message>
        <source>Next row</source>
        <translation>Nächste Zeile</translation>
    </message>
    <message>
        <source>Scratch Row</source>
        <translation>Entwurfszeile</translation>
    </message>
    <message>
        <source>Null Row</source>
        <translation>Nullzeile</translation>
    </message>
    <message>
        <source>Copy to Scratch Row</source>
        <translation>In Entwurfszeile kopieren</translation>
    </message>
    <message>
        <source>Allow Edits</source>
        <translation>Änderungen erlauben</translation>
    </message>
    <message>
        <source>Readable Times</source>
        <translation>Lesbare Zeiten</translation>
    </message>
    <message>
        <source>Local Timezone</source>
        <translation>Ortszeit</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
    <message>
        <source>Dismiss</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>in table &apos;%1&apos;</source>
        <translation>in Tabelle „%1“</translation>
    </message>
    <message>
        <source>%2 total rows</source>
        <translation>insgesamt %2 Zeilen</translation>
    </message>
    <message>
        <source>Row would be identical to row %1 -- duplicate row not added</source>
        <translation>Die Zeile wäre gleich der Zeile %1 – doppelte Zeile nicht hinzugefügt</translation>
    </message>
    <message>
        <source>No records</source>
        <translation>Keine Datensätze</translation>
    </message>
    <message>
        <source>No column is shown</source>
        <translation>Keine Spalte wird gezeigt</translation>
    </message>
    <message>
        <source>Unexpected error: unknown action selected in OrvaneTableView::</source>
        <translation>Unerwarteter Fehler: unbekannte Aktion gewählt in OrvaneTableView::</translation>
    </message>
    <message>
        <source>Find Backward</source>
        <translation>Rückwärts suchen</translation>
    </message>
    <message>
        <source>Find Forward</source>
        <translation>Vorwärts suchen</translation>
    </message>
    <message>
        <source>Subset</source>
        <translation>Teilmenge</translation>
    </message>
    <message>
        <source>Mark Row %1 For Deletion From Table</source>
        <translation>Zeile %1 der Tabelle zum Löschen vormerken</translation>
    </message>
    <message>
        <source>Delete Row %1 From View</source>
        <translation>Zeile %1 aus der Sicht nehmen</translation>
    </message>
    <message>
        <source>Show Row %1</source>
        <translation>Zeile %1 zeigen</translation>
    </message>
    <message>
        <source>Remove Column &apos;%1&apos; From Display</source>
        <translation>Spalte „%1“ ausblenden</translation>
    </message>
    <message>
        <source>Change Selected &apos;%1&apos; Values</source>
        <translation>Ausgewählte Werte von „%1“ ändern</translation>
    </message>
    <message>
        <source>Change All &apos;%1&apos; Values</source>
        <translation>Alle Werte von „%1“ ändern</translation>
    </message>
    <message>
        <source>Get Value for</source>
        <translation>Neuer Wert für</translation>
    </message>
    <message>
        <source>Value for</source>
        <translation>Wert für</translation>
    </message>
    <message>
        <source>&apos;%1&apos; was not stored: %2</source>
        <translation>„%1“ wurde nicht gespeichert: %2</translation>
    </message>
    <message>
        <source>Take it up again</source>
        <translation>Wieder aufnehmen</translation>
    </message>
    <message>
        <source>Double-click, press Enter or drag to choose a name</source>
        <translation>Doppelklicken, Eingabetaste drücken oder ziehen, um einen Namen zu wählen</translation>
    </message>
    <message>
        <source>Drag to change the order, press Delete to take a name out</source>
        <translation>Ziehen ändert die Reihenfolge, die Entfernen-Taste nimmt einen Namen heraus</translation>
    </message>
    <message>
        <source>Fields</source>
        <translation>Felder</translation>
    </message>
    <message>
        <source>Chosen</source>
        <translation>Gewählt</translation>
    </message>
    <message>
        <source>Choose all</source>
        <translation>Alle wählen</translation>
    </message>
    <message>
        <source>Clear all</source>
        <translation>Alle entfernen</translation>
    </message>
    <message>
        <source>Reverse</source>
        <translation>Umgekehrt</translation>
    </message>
    <message>
        <source>Unique</source>
        <translation>Ohne Doppelte</translation>
    </message>
    <message>
        <source>dbselect failed</source>
        <translation>dbselect ist gescheitert</translation>
    </message>
    <message>
        <source>%1 already exists.
Do you want to replace it?</source>
        <translation>%1 gibt es schon.
Möchten Sie die Datei ersetzen?</translation>
    </message>
    <message>
        <source>dbunjoin failed</source>
        <translation>dbunjoin ist gescheitert</translation>
    </message>
    <message>
        <source>dbsave_view failed</source>
        <translation>dbsave_view ist gescheitert</translation>
    </message>
    <message>
        <source>dbwrite_view failed</source>
        <translation>dbwrite_view ist gescheitert</translation>
    </message>
    <message>
        <source>New Database</source>
        <translation>Neue Datenbank</translation>
    </message>
    <message>
        <source>View</source>
        <translation>Sicht</translation>
    </message>
    <message>
        <source>Excel Spreadsheet (*.xlsx)</source>
        <translation>Excel-Tabellenblatt (*.xlsx)</translation>
    </message>
    <message>
        <source>Text File -- spaces (*.txt)</source>
        <translation>Textdatei – Leerzeichen (*.txt)</translation>
    </message>
    <message>
        <source>Text File -- tabs (*.tsv)</source>
        <translation>Textdatei – Tabulatoren (*.tsv)</translation>
    </message>
    <message>
        <source>Text File -- commas (*.csv)</source>
        <translation>Textdatei – Kommas (*.csv)</translation>
    </message>
    <message>
        <source>Image File (*.png)</source>
        <translation>Bilddatei (*.png)</translation>
    </message>
    <message>
        <source>Unexpected internal logic error -- unknown format from SaveAs Dialog</source>
        <translation>Unerwarteter interner Fehler – unbekanntes Format aus dem Speichern-Dialog</translation>
    </message>
    <message>
        <source>The window could not be drawn</source>
        <translation>Das Fenster konnte nicht gezeichnet werden</translation>
    </message>
    <message>
        <source>&apos;%1&apos; has %2 rows; a spreadsheet holds no more than %3. Nothing was written: save it as a text file, or a part of it.</source>
        <translation>„%1“ hat %2 Zeilen; ein Tabellenblatt fasst höchstens %3. Nichts wurde geschrieben: Speichern Sie als Textdatei oder nur einen Teil.</translation>
    </message>
    <message>
        <source>&apos;%1&apos; has more columns than a spreadsheet holds</source>
        <translation>„%1“ hat mehr Spalten, als ein Tabellenblatt fasst</translation>
    </message>
    <message>
        <source>The spreadsheet &apos;%1&apos; could not be written</source>
        <translation>Das Tabellenblatt „%1“ konnte nicht geschrieben werden</translation>
    </message>
    <message>
        <source>Row %1, column %2 could not be written to the spreadsheet</source>
        <translation>Zeile %1, Spalte %2 konnte nicht in das Tabellenblatt geschrieben werden</translation>
    </message>
    <message>
        <source>Subset expression</source>
        <translation>Ausdruck der Teilmenge</translation>
    </message>
    <message>
        <source>Subset of &apos;%1&apos; on expression &apos;%2&apos;</source>
        <translation>Teilmenge von „%1“ mit dem Ausdruck „%2“</translation>
    </message>
    <message>
        <source>Sort fields</source>
        <translation>Sortierfelder</translation>
    </message>
    <message>
        <source>Sort of &apos;%1&apos; on fields</source>
        <translation>Sortieren von „%1“ nach den Feldern</translation>
    </message>
    <message>
        <source>Group fields</source>
        <translation>Gruppierfelder</translation>
    </message>
    <message>
        <source>Group of &apos;%1&apos; on fields</source>
        <translation>Gruppieren von „%1“ nach den Feldern</translation>
    </message>
    <message>
        <source>Ungroup of &apos;%1&apos;</source>
        <translation>Auflösen der Gruppen von „%1“</translation>
    </message>
    <message>
        <source>Join of &apos;%1&apos; to &apos;%2&apos;</source>
        <translation>Verbund von „%1“ mit „%2“</translation>
    </message>
    <message>
        <source>Outer-join of &apos;%1&apos; to &apos;%2&apos;</source>
        <translation>Äußerer Verbund von „%1“ mit „%2“</translation>
    </message>
    <message>
        <source>Left-join of &apos;%1&apos; to &apos;%2&apos;</source>
        <translation>Linker Verbund von „%1“ mit „%2“</translation>
    </message>
    <message>
        <source>No-join of &apos;%1&apos; to &apos;%2&apos;</source>
        <translation>Zeilen von „%1“ ohne Entsprechung in „%2“</translation>
    </message>
    <message>
        <source>Theta-join expression</source>
        <translation>Ausdruck des Theta-Verbunds</translation>
    </message>
    <message>
        <source>Theta-join of &apos;%1&apos; to &apos;%2&apos; with expression &apos;%3&apos;</source>
        <translation>Theta-Verbund von „%1“ mit „%2“ und dem Ausdruck „%3“</translation>
    </message>
    <message>
        <source>Sever of table &apos;%1&apos; from &apos;%2&apos;</source>
        <translation>Abtrennen der Tabelle „%1“ von „%2“</translation>
    </message>
    <message>
        <source>Separate table &apos;%1&apos; from &apos;%2&apos;</source>
        <translation>Herauslösen der Tabelle „%1“ aus „%2“</translation>
    </message>
    <message>
        <source>Database name</source>
        <translation>Datenbankname</translation>
    </message>
    <message>
        <source>Database dbpath</source>
        <translation>Datenbankpfad</translation>
    </message>
    <message>
        <source>Launch path</source>
        <translation>Aufrufpfad</translation>
    </message>
    <message>
        <source>Absolute path</source>
        <translation>Absoluter Pfad</translation>
    </message>
    <message>
        <source>Schema</source>
        <translation>Schema</translation>
    </message>
    <message>
        <source>Schema description</source>
        <translation>Schemabeschreibung</translation>
    </message>
    <message>
        <source>Timestamp field</source>
        <translation>Zeitstempelfeld</translation>
    </message>
    <message>
        <source>Schema detail</source>
        <translation>Einzelheiten zum Schema</translation>
    </message>
    <message>
        <source>Primary</source>
        <translation>Primär</translation>
    </message>
    <message>
        <source>Alternate</source>
        <translation>Alternativ</translation>
    </message>
    <message>
        <source>Foreign</source>
        <translation>Fremd</translation>
    </message>
    <message>
        <source>Field</source>
        <translation>Feld</translation>
    </message>
    <message>
        <source>Description</source>
        <translation>Beschreibung</translation>
    </message>
    <message>
        <source>Type</source>
        <translation>Typ</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>Format</translation>
    </message>
    <message>
        <source>Position in row</source>
        <translation>Stelle in der Zeile</translation>
    </message>
    <message>
        <source>Range</source>
        <translation>Wertebereich</translation>
    </message>
    <message>
        <source>Units</source>
        <translation>Einheit</translation>
    </message>
    <message>
        <source>Null value</source>
        <translation>Nullwert</translation>
    </message>
    <message>
        <source>Defining for table</source>
        <translation>Definiert in</translation>
    </message>
    <message>
        <source>Key type for</source>
        <translation>Schlüsselart für</translation>
    </message>
    <message>
        <source>Column empty</source>
        <translation>Spalte leer</translation>
    </message>
    <message>
        <source>Probably</source>
        <translation>Wahrscheinlich</translation>
    </message>
    <message>
        <source>Detailed description</source>
        <translation>Ausführliche Beschreibung</translation>
    </message>
    <message>
        <source>Record index</source>
        <translation>Datensatznummer</translation>
    </message>
    <message>
        <source>Record size</source>
        <translation>Datensatzlänge</translation>
    </message>
    <message>
        <source>record</source>
        <translation>Datensatz</translation>
    </message>
    <message>
        <source>records</source>
        <translation>Datensätze</translation>
    </message>
    <message>
        <source>Table</source>
        <translation>Tabelle</translation>
    </message>
    <message>
        <source>Table type</source>
        <translation>Tabellenart</translation>
    </message>
    <message>
        <source>Record count</source>
        <translation>Datensätze</translation>
    </message>
    <message>
        <source>View tables</source>
        <translation>Tabellen der Sicht</translation>
    </message>
    <message>
        <source>Table creation</source>
        <translation>Entstehung</translation>
    </message>
    <message>
        <source>Base Table</source>
        <translation>Basistabelle</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Unix permissions</source>
        <translation>Unix-Rechte</translation>
    </message>
    <message>
        <source>Read/Write</source>
        <translation>Lesen/Schreiben</translation>
    </message>
    <message>
        <source>Read-only</source>
        <translation>Nur Lesen</translation>
    </message>
    <message>
        <source>Modified</source>
        <translation>Geändert</translation>
    </message>
    <message>
        <source>Table size</source>
        <translation>Tabellengröße</translation>
    </message>
    <message>
        <source>bytes per record</source>
        <translation>Bytes je Datensatz</translation>
    </message>
    <message>
        <source>Primary keys</source>
        <translation>Primärschlüssel</translation>
    </message>
    <message>
        <source>Alternate keys</source>
        <translation>Alternativschlüssel</translation>
    </message>
    <message>
        <source>Foreign keys</source>
        <translation>Fremdschlüssel</translation>
    </message>
    <message>
        <source>Defines</source>
        <translation>Definiert</translation>
    </message>
    <message>
        <source>Standard input: %1</source>
        <translation>Standardeingabe: %1</translation>
    </message>
    <message>
        <source>Standard input: cannot be kept: %1</source>
        <translation>Standardeingabe: kann nicht zwischengespeichert werden: %1</translation>
    </message>
    <message>
        <source>%1: cannot be written: %2</source>
        <translation>%1: kann nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>second</source>
        <translation>Sekunde</translation>
    </message>
    <message>
        <source>seconds</source>
        <translation>Sekunden</translation>
    </message>
    <message>
        <source>minute</source>
        <translation>Minute</translation>
    </message>
    <message>
        <source>minutes</source>
        <translation>Minuten</translation>
    </message>
    <message>
        <source>hour</source>
        <translation>Stunde</translation>
    </message>
    <message>
        <source>hours</source>
        <translation>Stunden</translation>
    </message>
    <message>
        <source>day</source>
        <translation>Tag</translation>
    </message>
    <message>
        <source>days</source>
        <translation>Tagen</translation>
    </message>
    <message>
        <source>year</source>
        <translation>Jahr</translation>
    </message>
    <message>
        <source>years</source>
        <translation>Jahren</translation>
    </message>
    <message>
        <source>Changing the rows of %1</source>
        <translation>Die Zeilen von %1 werden geändert</translation>
    </message>
    <message>
        <source>Marking rows of %1</source>
        <translation>Zeilen von %1 werden vorgemerkt</translation>
    </message>
    <message>
        <source>Undoing the change of %1</source>
        <translation>Die Änderung von %1 wird rückgängig gemacht</translation>
    </message>
    <message>
        <source>Changing %1 again</source>
        <translation>%1 wird wieder geändert</translation>
    </message>
    <message>
        <source>There is no room to keep what was there before the last change: it can&apos;t be undone.</source>
        <translation>Für das, was vor der letzten Änderung da war, ist kein Platz: Sie lässt sich nicht rückgängig machen.</translation>
    </message>
    <message>
        <source>Another program has crunched or replaced a table: what was changed in it before can&apos;t be undone any more.</source>
        <translation>Ein anderes Programm hat eine Tabelle verdichtet oder ersetzt: Was vorher in ihr geändert wurde, lässt sich nicht mehr rückgängig machen.</translation>
    </message>
    <message>
        <source>Nothing was undone of &quot;%1&quot;: the records hold something else by now. Another program may have changed them.</source>
        <translation>Von „%1“ wurde nichts rückgängig gemacht: In den Datensätzen steht inzwischen etwas anderes. Vielleicht hat ein anderes Programm sie geändert.</translation>
    </message>
    <message>
        <source>Nothing was done again of &quot;%1&quot;: the records hold something else by now. Another program may have changed them.</source>
        <translation>Von „%1“ wurde nichts wiederholt: In den Datensätzen steht inzwischen etwas anderes. Vielleicht hat ein anderes Programm sie geändert.</translation>
    </message>
    <message>
        <source>%2 of %3 values of &quot;%1&quot; were left as they are: they are others by now. Another program may have changed them.</source>
        <translation>%2 von %3 Werten von „%1“ blieben, wie sie sind: Es sind inzwischen andere. Vielleicht hat ein anderes Programm sie geändert.</translation>
    </message>
    <message>
        <source>Stopped before &quot;%1&quot; was done. Do it once more for the rest.</source>
        <translation>Angehalten, bevor „%1“ fertig war. Noch einmal aufgerufen, geht es mit dem Rest weiter.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; can&apos;t be done again: %2</source>
        <translation>„%1“ lässt sich nicht wiederholen: %2</translation>
    </message>
    <message>
        <source>Changes of Several Tables</source>
        <translation>Änderungen mehrerer Tabellen</translation>
    </message>
    <message>
        <source>Change of %1 Values of %2</source>
        <translation>Änderung von %1 Werten von %2</translation>
    </message>
    <message>
        <source>Change of %2.%3 in record %4</source>
        <translation>Änderung von %2.%3 in Datensatz %4</translation>
    </message>
    <message>
        <source>Change of %2.%3 in %1 records</source>
        <translation>Änderung von %2.%3 in %1 Datensätzen</translation>
    </message>
    <message>
        <source>Marking Record %4 of %2</source>
        <translation>Vormerken von Datensatz %4 von %2</translation>
    </message>
    <message>
        <source>Marking %1 Records of %2</source>
        <translation>Vormerken von %1 Datensätzen von %2</translation>
    </message>
    <message>
        <source>Adding 1 Record to %2</source>
        <translation>Anfügen von 1 Datensatz an %2</translation>
    </message>
    <message>
        <source>Adding %1 Records to %2</source>
        <translation>Anfügen von %1 Datensätzen an %2</translation>
    </message>
    <message>
        <source>what was there before can&apos;t be read back</source>
        <translation>was vorher da war, lässt sich nicht mehr lesen</translation>
    </message>
    <message>
        <source>Change Values</source>
        <translation>Werte ändern</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>Ändern</translation>
    </message>
    <message>
        <source>Put &apos;%4&apos; into %1 cells in %2 rows of &apos;%3&apos;?</source>
        <translation>„%4“ in %1 Zellen in %2 Zeilen von „%3“ schreiben?</translation>
    </message>
    <message>
        <source>Change &apos;%1&apos; to &apos;%4&apos; in all %2 rows of &apos;%3&apos;?</source>
        <translation>„%1“ in allen %2 Zeilen von „%3“ auf „%4“ ändern?</translation>
    </message>
    <message>
        <source>Stopped: &apos;%4&apos; was stored in %1 of %2 cells.</source>
        <translation>Angehalten: „%4“ steht in %1 von %2 Zellen.</translation>
    </message>
    <message>
        <source>&apos;%4&apos; was not stored in %1 cells: %2</source>
        <translation>„%4“ wurde in %1 Zellen nicht gespeichert: %2</translation>
    </message>
    <message>
        <source>Stopped: %1 of %2 rows are marked.</source>
        <translation>Angehalten: %1 von %2 Zeilen sind vorgemerkt.</translation>
    </message>
    <message>
        <source>%1 of %2 rows are marked. The others are not: %3</source>
        <translation>%1 von %2 Zeilen sind vorgemerkt. Die anderen sind es nicht: %3</translation>
    </message>
    <message>
        <source>Read only: edits are not allowed here</source>
        <translation>Nur Lesen: Änderungen sind hier nicht erlaubt</translation>
    </message>
    <message>
        <source>&quot;%1&quot; can&apos;t be undone: %2</source>
        <translation>„%1“ lässt sich nicht rückgängig machen: %2</translation>
    </message>
    <message>
        <source>%1 rows of %2 columns are about %3 MB of text, too much for the clipboard. Save the table as a text file, or copy a part of it.</source>
        <translation>%1 Zeilen mit %2 Spalten sind etwa %3 MB Text, zu viel für die Zwischenablage. Speichern Sie die Tabelle als Textdatei oder kopieren Sie nur einen Teil.</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Copy %1 rows of %2 columns? They take about %3 MB of memory for as long as they are in the clipboard.</source>
        <translation>%1 Zeilen mit %2 Spalten kopieren? Sie belegen etwa %3 MB Speicher, solange sie in der Zwischenablage sind.</translation>
    </message>
    <message>
        <source>The cells are too much text for the clipboard. Copy a part of them.</source>
        <translation>Die Zellen sind zu viel Text für die Zwischenablage. Kopieren Sie nur einen Teil.</translation>
    </message>
    <message>
        <source>The selected cells don&apos;t make up a table: in each row the same columns must be selected. Nothing was copied.</source>
        <translation>Die ausgewählten Zellen ergeben keine Tabelle: In jeder Zeile müssen dieselben Spalten ausgewählt sein. Nichts wurde kopiert.</translation>
    </message>
    <message>
        <source>There is no text in the clipboard to be pasted.</source>
        <translation>In der Zwischenablage ist kein Text, der eingefügt werden könnte.</translation>
    </message>
    <message>
        <source>Nothing was pasted: line %1 of the clipboard has %2 values where the first has %3.</source>
        <translation>Nichts wurde eingefügt: Zeile %1 der Zwischenablage hat %2 Werte, die erste aber %3.</translation>
    </message>
    <message>
        <source>Nothing was pasted: the clipboard has %1 rows, and from row %2 on there are only %3. Rows are added with Add Rows.</source>
        <translation>Nichts wurde eingefügt: Die Zwischenablage hat %1 Zeilen, und ab Zeile %2 gibt es nur %3. Zeilen fügt man mit Zeilen hinzufügen an.</translation>
    </message>
    <message>
        <source>Nothing was pasted: the clipboard has %1 columns, and from column %2 on only %3 are shown.</source>
        <translation>Nichts wurde eingefügt: Die Zwischenablage hat %1 Spalten, und ab Spalte %2 werden nur %3 gezeigt.</translation>
    </message>
    <message>
        <source>Select the cell where pasting is to begin.</source>
        <translation>Wählen Sie die Zelle aus, bei der das Einfügen beginnen soll.</translation>
    </message>
    <message>
        <source>it can&apos;t be changed</source>
        <translation>sie kann nicht geändert werden</translation>
    </message>
    <message>
        <source>Nothing was pasted. Row %1, %2: &apos;%3&apos; can&apos;t be stored: %4</source>
        <translation>Nichts wurde eingefügt. Zeile %1, %2: „%3“ kann nicht gespeichert werden: %4</translation>
    </message>
    <message>
        <source>Row %1, %2: &apos;%3&apos; can&apos;t be stored: %4 %5 cells were changed before.</source>
        <translation>Zeile %1, %2: „%3“ kann nicht gespeichert werden: %4 Vorher wurden %5 Zellen geändert.</translation>
    </message>
    <message>
        <source>The table has gone meanwhile. %1 cells were changed.</source>
        <translation>Die Tabelle ist inzwischen verschwunden. %1 Zellen wurden geändert.</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Einfügen</translation>
    </message>
    <message>
        <source>Change %1 cells?</source>
        <translation>%1 Zellen ändern?</translation>
    </message>
    <message>
        <source>Pasting was cancelled. %1 cells were changed before.</source>
        <translation>Das Einfügen wurde abgebrochen. Vorher wurden %1 Zellen geändert.</translation>
    </message>
    <message>
        <source>Save &amp;With Column Names</source>
        <translation>Mit S&amp;paltennamen speichern</translation>
    </message>
    <message>
        <source>Begin text files and spreadsheets with the names of the columns</source>
        <translation>Textdateien und Tabellenblätter mit den Namen der Spalten beginnen</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>Bea&amp;rbeiten</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>Copy the selected cells as tab-separated text</source>
        <translation>Die ausgewählten Zellen als Text mit Tabulatoren kopieren</translation>
    </message>
    <message>
        <source>Copy &amp;With Column Names</source>
        <translation>&amp;Mit Spaltennamen kopieren</translation>
    </message>
    <message>
        <source>Copy the selected cells below a line with the names of their columns</source>
        <translation>Die ausgewählten Zellen unter einer Zeile mit den Namen ihrer Spalten kopieren</translation>
    </message>
    <message>
        <source>&amp;Paste</source>
        <translation>&amp;Einfügen</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>&amp;Alles auswählen</translation>
    </message>
    <message>
        <source>&amp;Find...</source>
        <translation>&amp;Suchen...</translation>
    </message>
    <message>
        <source>Find &amp;Next</source>
        <translation>&amp;Weitersuchen</translation>
    </message>
    <message>
        <source>Find Pre&amp;vious</source>
        <translation>&amp;Rückwärts suchen</translation>
    </message>
    <message>
        <source>Go to the first row from here on for which an expression is true</source>
        <translation>Zur ersten Zeile von hier an gehen, für die ein Ausdruck wahr ist</translation>
    </message>
    <message>
        <source>Find rows for which</source>
        <translation>Zeilen suchen, für die gilt</translation>
    </message>
    <message>
        <source>No row of %1 fits: %2</source>
        <translation>Keine Zeile von %1 passt: %2</translation>
    </message>
    <message>
        <source>Rows can&apos;t be searched by &apos;%1&apos;.</source>
        <translation>Nach &apos;%1&apos; können keine Zeilen gesucht werden.</translation>
    </message>
    <message>
        <source>Searched on from the last row.</source>
        <translation>Von der letzten Zeile an weitergesucht.</translation>
    </message>
    <message>
        <source>Searched on from the first row.</source>
        <translation>Von der ersten Zeile an weitergesucht.</translation>
    </message>
    <message>
        <source>Select every cell of the table</source>
        <translation>Jede Zelle der Tabelle auswählen</translation>
    </message>
    <message>
        <source>Put tab-separated text into the cells from the first selected one on; a single value into all selected cells</source>
        <translation>Text mit Tabulatoren ab der ersten ausgewählten Zelle in die Zellen setzen; einen einzelnen Wert in alle ausgewählten Zellen</translation>
    </message>
    <message>
        <source>Cells are changed only while Rows, Allow Edits is on.</source>
        <translation>Zellen werden nur geändert, solange Zeilen, Änderungen erlauben eingeschaltet ist.</translation>
    </message>
    <message>
        <source>The table can&apos;t be changed.</source>
        <translation>Die Tabelle kann nicht geändert werden.</translation>
    </message>
    <message>
        <source>&amp;Print...</source>
        <translation>&amp;Drucken...</translation>
    </message>
    <message>
        <source>Show the table shown as it will be printed, and print it</source>
        <translation>Die gezeigte Tabelle zeigen, wie sie gedruckt wird, und drucken</translation>
    </message>
    <message>
        <source>Copying cells of %1</source>
        <translation>Zellen von %1 werden kopiert</translation>
    </message>
    <message>
        <source>Copying cells of %1 was cancelled.</source>
        <translation>Das Kopieren von Zellen aus %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Pasting into %1</source>
        <translation>In %1 wird eingefügt</translation>
    </message>
    <message>
        <source>Pasting into %1 was cancelled.</source>
        <translation>Das Einfügen in %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Laying out the rows of %1</source>
        <translation>Die Zeilen von %1 werden auf Seiten verteilt</translation>
    </message>
    <message>
        <source>Printing %1 was cancelled.</source>
        <translation>Das Drucken von %1 wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Printing the rows of %1</source>
        <translation>Die Zeilen von %1 werden gedruckt</translation>
    </message>
    <message>
        <source>Page %1 of %2</source>
        <translation>Seite %1 von %2</translation>
    </message>
    <message>
        <source>Print</source>
        <translation>Drucken</translation>
    </message>
    <message>
        <source>%1 rows are selected. Print only these, or all %2?</source>
        <translation>%1 Zeilen sind ausgewählt. Nur diese drucken, oder alle %2?</translation>
    </message>
    <message>
        <source>&amp;Selected Rows</source>
        <translation>Aus&amp;gewählte Zeilen</translation>
    </message>
    <message>
        <source>&amp;All Rows</source>
        <translation>&amp;Alle Zeilen</translation>
    </message>
    <message>
        <source>Printed, these rows are %1 pages, and no more than %2 can be shown. Select the rows that you want, or save the table as a text file.</source>
        <translation>Gedruckt sind diese Zeilen %1 Seiten, und mehr als %2 können nicht gezeigt werden. Wählen Sie die gewünschten Zeilen aus oder speichern Sie die Tabelle als Textdatei.</translation>
    </message>
    <message>
        <source>Printed, these rows are %1 pages. Show them?</source>
        <translation>Gedruckt sind diese Zeilen %1 Seiten. Sollen sie gezeigt werden?</translation>
    </message>
    <message>
        <source>The printer can&apos;t be used.</source>
        <translation>Der Drucker kann nicht benutzt werden.</translation>
    </message>
    <message>
        <source>%1: the pages can&apos;t be written there.</source>
        <translation>%1: Die Seiten können dort nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>No column is shown, so there is nothing to print.</source>
        <translation>Es wird keine Spalte gezeigt, also gibt es nichts zu drucken.</translation>
    </message>
    <message>
        <source>%1 rows are too many to be printed. Select the rows that you want, or save the table as a text file.</source>
        <translation>%1 Zeilen sind zu viele zum Drucken. Wählen Sie die gewünschten Zeilen aus oder speichern Sie die Tabelle als Textdatei.</translation>
    </message>
    <message>
        <source>Print %1</source>
        <translation>%1 drucken</translation>
    </message>
    <message>
        <source>there is no such cell</source>
        <translation>eine solche Zelle gibt es nicht</translation>
    </message>
    <message>
        <source>Row %1 of &apos;%2&apos; can&apos;t be read any more: the table has changed meanwhile. Nothing was written.</source>
        <translation>Zeile %1 von „%2“ kann nicht mehr gelesen werden: Die Tabelle hat sich inzwischen geändert. Nichts wurde geschrieben.</translation>
    </message>
    <message>
        <source>Row %1 can&apos;t be read any more: the table has changed. A view of it has to be made again.</source>
        <translation>Zeile %1 kann nicht mehr gelesen werden: Die Tabelle hat sich geändert. Eine Sicht auf sie muss neu gebildet werden.</translation>
    </message>
    <message>
        <source>&amp;New Database...</source>
        <translation>&amp;Neue Datenbank...</translation>
    </message>
    <message>
        <source>Make a new database, with no records yet</source>
        <translation>Eine neue Datenbank anlegen, noch ohne Datensätze</translation>
    </message>
    <message>
        <source>Storing a value in %1</source>
        <translation>Ein Wert wird in %1 gespeichert</translation>
    </message>
    <message>
        <source>Storing the value was given up; %1 is as it was.</source>
        <translation>Das Speichern des Werts wurde aufgegeben; %1 ist, wie es war.</translation>
    </message>
    <message>
        <source>Adding a record to %1</source>
        <translation>Ein Datensatz wird zu %1 hinzugefügt</translation>
    </message>
    <message>
        <source>Adding the record was given up; %1 is as it was.</source>
        <translation>Das Hinzufügen des Datensatzes wurde aufgegeben; %1 ist, wie es war.</translation>
    </message>
    <message>
        <source>Marking a record of %1</source>
        <translation>Ein Datensatz von %1 wird vorgemerkt</translation>
    </message>
    <message>
        <source>Marking the record was given up.</source>
        <translation>Das Vormerken des Datensatzes wurde aufgegeben.</translation>
    </message>
    <message>
        <source>Changed meanwhile: &apos;%1&apos; is stored now. Enter replaces it by what you typed, Escape leaves it.</source>
        <translation>Inzwischen geändert: Jetzt ist „%1“ gespeichert. Die Eingabetaste ersetzt es durch Ihre Eingabe, Esc lässt es stehen.</translation>
    </message>
    <message>
        <source>The record that was being changed is gone: another program removed it or replaced the table. Not stored was what had been typed:</source>
        <translation>Der Datensatz, der geändert wurde, ist verschwunden: Ein anderes Programm hat ihn entfernt oder die Tabelle ersetzt. Nicht gespeichert wurde die Eingabe:</translation>
    </message>
    <message>
        <source>the record is gone</source>
        <translation>der Datensatz ist verschwunden</translation>
    </message>
    <message>
        <source>Another program removed the record of row %1 or replaced the table.</source>
        <translation>Ein anderes Programm hat den Datensatz der Zeile %1 entfernt oder die Tabelle ersetzt.</translation>
    </message>
    <message>
        <source>Another program has replaced a table since this view was made of it, and its rows stand for nothing any more. Close the view and make it again.</source>
        <translation>Ein anderes Programm hat eine Tabelle ersetzt, seit diese Sicht daraus gebildet wurde; ihre Zeilen stehen für nichts mehr. Schließen Sie die Sicht und bilden Sie sie neu.</translation>
    </message>
    <message>
        <source>Another program has replaced the table &apos;%1&apos; since it was shown. Nothing was changed. The table has been read anew: look at the rows and try again.</source>
        <translation>Ein anderes Programm hat die Tabelle „%1“ ersetzt, seit sie gezeigt wurde. Nichts wurde geändert. Die Tabelle ist neu gelesen: Sehen Sie die Zeilen an und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>Changed meanwhile: &apos;%1&apos; is stored now. Enter replaces it by what you typed.</source>
        <translation>Inzwischen geändert: Jetzt ist „%1“ gespeichert. Die Eingabetaste ersetzt es durch Ihre Eingabe.</translation>
    </message>
    <message>
        <source>the table is not there any more</source>
        <translation>die Tabelle gibt es nicht mehr</translation>
    </message>
    <message>
        <source>another program replaced the table since it was shown, and it is read anew. Look whether this is still the record that you mean, and store the value again</source>
        <translation>ein anderes Programm hat die Tabelle ersetzt, seit sie gezeigt wurde; sie ist neu gelesen. Prüfen Sie, ob dies noch der gemeinte Datensatz ist, und speichern Sie den Wert noch einmal</translation>
    </message>
    <message>
        <source>Putting back what was there was cancelled: Undo does the rest.</source>
        <translation>Das Zurückstellen wurde abgebrochen: Den Rest stellt „Rückgängig“ zurück.</translation>
    </message>
    <message>
        <source>%1 values can&apos;t be put back: another program has changed them since.</source>
        <translation>%1 Werte lassen sich nicht zurückstellen: Ein anderes Programm hat sie seither geändert.</translation>
    </message>
    <message>
        <source>No cell was changed: &apos;%4&apos; can&apos;t be stored: %2</source>
        <translation>Keine Zelle wurde geändert: „%4“ lässt sich nicht speichern: %2</translation>
    </message>
    <message>
        <source>No row was marked: %1</source>
        <translation>Keine Zeile wurde vorgemerkt: %1</translation>
    </message>
    <message>
        <source>records would have the same key (%1)</source>
        <translation>Datensätze hätten denselben Schlüssel (%1)</translation>
    </message>
    <message>
        <source>en</source>
        <extracomment>The code of the language that is translated into, such as &quot;de&quot;: numbers are written as in that.</extracomment>
        <translation>de</translation>
    </message>
</context>
<context>
    <name>ProblemsDialog</name>
    <message>
        <source>Problems</source>
        <translation>Probleme</translation>
    </message>
    <message>
        <source>C&amp;opy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>C&amp;lear</source>
        <translation>&amp;Leeren</translation>
    </message>
    <message>
        <source>What could not be read, and why:</source>
        <translation>Was nicht gelesen werden konnte, und warum:</translation>
    </message>
</context>
<context>
    <name>ProgressDialog</name>
    <message>
        <source>Working</source>
        <translation>In Arbeit</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>RowsMenu</name>
    <message>
        <source>&amp;Rows</source>
        <translation>&amp;Zeilen</translation>
    </message>
    <message>
        <source>Allow &amp;Edits</source>
        <translation>Änderungen &amp;erlauben</translation>
    </message>
    <message>
        <source>&amp;New Table</source>
        <translation>Neue &amp;Tabelle</translation>
    </message>
    <message>
        <source>Let cells be changed by typing into them</source>
        <translation>Zellen lassen sich durch Eintippen ändern</translation>
    </message>
    <message>
        <source>The database is open for reading only. Open it again to read and write.</source>
        <translation>Die Datenbank ist nur zum Lesen geöffnet. Öffnen Sie sie erneut zum Lesen und Schreiben.</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Wiederholen</translation>
    </message>
    <message>
        <source>&amp;Undo %1</source>
        <translation>&amp;Rückgängig: %1</translation>
    </message>
    <message>
        <source>&amp;Redo %1</source>
        <translation>&amp;Wiederholen: %1</translation>
    </message>
    <message>
        <source>No table is shown.</source>
        <translation>Es wird keine Tabelle gezeigt.</translation>
    </message>
    <message>
        <source>This is a table; rows are taken out of views.</source>
        <translation>Dies ist eine Tabelle; Zeilen nimmt man aus Sichten.</translation>
    </message>
    <message>
        <source>This is a view; records are added, marked and removed in its tables.</source>
        <translation>Dies ist eine Sicht; Datensätze werden in ihren Tabellen angefügt, vorgemerkt und entfernt.</translation>
    </message>
    <message>
        <source>The file of the table can&apos;t be written.</source>
        <translation>Die Datei der Tabelle kann nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>No row is selected.</source>
        <translation>Es ist keine Zeile ausgewählt.</translation>
    </message>
    <message>
        <source>What was changed in the table before can&apos;t be undone any more.</source>
        <translation>Was vorher in der Tabelle geändert wurde, lässt sich dann nicht mehr rückgängig machen.</translation>
    </message>
</context>
<context>
    <name>SchemaWindow</name>
    <message>
        <source>Schema %1</source>
        <translation>Schema %1</translation>
    </message>
    <message>
        <source>Search names and descriptions</source>
        <translation>Namen und Beschreibungen durchsuchen</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Description</source>
        <translation>Beschreibung</translation>
    </message>
    <message>
        <source>This table is in the database</source>
        <translation>Diese Tabelle ist in der Datenbank</translation>
    </message>
</context>
<context>
    <name>StartPage</name>
    <message>
        <source>Open a database to see every table of it in a tab. A database is the file that describes it, or the table files that share its name.</source>
        <translation>Öffnen Sie eine Datenbank, um jede ihrer Tabellen in einem Tab zu sehen. Eine Datenbank ist die Datei, die sie beschreibt, oder die Tabellendateien, die ihren Namen tragen.</translation>
    </message>
    <message>
        <source>&amp;Open Database...</source>
        <translation>Datenbank ö&amp;ffnen...</translation>
    </message>
    <message>
        <source>Opened recently:</source>
        <translation>Zuletzt geöffnet:</translation>
    </message>
</context>
<context>
    <name>TimeLeft</name>
    <message>
        <source>A few seconds left</source>
        <translation>Noch wenige Sekunden</translation>
    </message>
    <message numerus="yes">
        <source>About %n seconds left</source>
        <translation>
            <numerusform>Noch etwa %n Sekunde</numerusform>
            <numerusform>Noch etwa %n Sekunden</numerusform>
        </translation>
    </message>
    <message>
        <source>About a minute left</source>
        <translation>Noch etwa eine Minute</translation>
    </message>
    <message numerus="yes">
        <source>About %n minutes left</source>
        <translation>
            <numerusform>Noch etwa %n Minute</numerusform>
            <numerusform>Noch etwa %n Minuten</numerusform>
        </translation>
    </message>
    <message>
        <source>About an hour left</source>
        <translation>Noch etwa eine Stunde</translation>
    </message>
    <message numerus="yes">
        <source>About %n hours left</source>
        <translation>
            <numerusform>Noch etwa %n Stunde</numerusform>
            <numerusform>Noch etwa %n Stunden</numerusform>
        </translation>
    </message>
    <message>
        <source>More than a day left</source>
        <translation>Noch mehr als einen Tag</translation>
    </message>
</context>
<context>
    <name>TimeZoneDialog</name>
    <message>
        <source>Time Zone</source>
        <translation>Zeitzone</translation>
    </message>
    <message>
        <source>Type to search, for example “Oslo”</source>
        <translation>Zum Suchen tippen, zum Beispiel „Oslo“</translation>
    </message>
    <message>
        <source>Local times are shown in this zone:</source>
        <translation>Ortszeiten werden in dieser Zone gezeigt:</translation>
    </message>
</context>
</TS>
