<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>QMainWindow</name>
    <message>
        <source>Select a database</source>
        <translation>Datenbank auswählen</translation>
    </message>
    <message>
        <source>Database Files (*.db)</source>
        <translation>Datenbankdateien (*.db)</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>VEXA message</source>
        <translation>VEXA-Meldung</translation>
    </message>
    <message>
        <source>Config file not valid. Click OK to launch application</source>
        <translation>Die Konfigurationsdatei ist ungültig. Mit OK wird die Anwendung gestartet</translation>
    </message>
</context>
<context>
    <name>VEXAInterface</name>
    <message>
        <source>VEXA Message</source>
        <translation>VEXA-Meldung</translation>
    </message>
    <message>
        <source>Database file does not exist</source>
        <translation>Die Datenbankdatei existiert nicht</translation>
    </message>
    <message>
        <source>VEXA message</source>
        <translation>VEXA-Meldung</translation>
    </message>
    <message>
        <source>Loading succeeded</source>
        <translation>Das Laden war erfolgreich</translation>
    </message>
    <message>
        <source>The database is not coherent</source>
        <translation>Die Datenbank ist nicht konsistent</translation>
    </message>
    <message>
        <source>The database could not be opened</source>
        <translation>Die Datenbank konnte nicht geöffnet werden</translation>
    </message>
    <message>
        <source>Initialisation protocol failed</source>
        <translation>Das Initialisierungsprotokoll ist fehlgeschlagen</translation>
    </message>
    <message>
        <source>A data block was refused</source>
        <translation>Ein Datenblock wurde abgelehnt</translation>
    </message>
    <message>
        <source>Failed to send ending frame</source>
        <translation>Der Schlussrahmen konnte nicht gesendet werden</translation>
    </message>
    <message>
        <source>Loading was cancelled</source>
        <translation>Das Laden wurde abgebrochen</translation>
    </message>
    <message>
        <source>No response from the terminal</source>
        <translation>Keine Antwort vom Terminal</translation>
    </message>
</context>
<context>
    <name>VEXAThread</name>
    <message>
        <source>Loading request failed - error : </source>
        <translation>Die Ladeanforderung ist fehlgeschlagen - Fehler: </translation>
    </message>
    <message>
        <source>A NACK was received : </source>
        <translation>Ein NACK wurde empfangen: </translation>
    </message>
    <message>
        <source>Timeout when sending data</source>
        <translation>Zeitüberschreitung beim Senden der Daten</translation>
    </message>
</context>
</TS>
