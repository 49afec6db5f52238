<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="nl" sourcelanguage="en">
<context>
    <name>QMainWindow</name>
    <message>
        <source>Select a database</source>
        <translation>Kies een database</translation>
    </message>
    <message>
        <source>Database Files (*.db)</source>
        <translation>Databasebestanden (*.db)</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>VEXA message</source>
        <translation>VEXA-melding</translation>
    </message>
    <message>
        <source>Config file not valid. Click OK to launch application</source>
        <translation>Het configuratiebestand is ongeldig. Klik op OK om de toepassing te starten</translation>
    </message>
</context>
<context>
    <name>VEXAInterface</name>
    <message>
        <source>VEXA Message</source>
        <translation>VEXA-melding</translation>
    </message>
    <message>
        <source>Database file does not exist</source>
        <translation>Het databasebestand bestaat niet</translation>
    </message>
    <message>
        <source>VEXA message</source>
        <translation>VEXA-melding</translation>
    </message>
    <message>
        <source>Loading succeeded</source>
        <translation>Het laden is geslaagd</translation>
    </message>
    <message>
        <source>The database is not coherent</source>
        <translation>De database is niet consistent</translation>
    </message>
    <message>
        <source>The database could not be opened</source>
        <translation>De database kon niet worden geopend</translation>
    </message>
    <message>
        <source>Initialisation protocol failed</source>
        <translation>Het initialisatieprotocol is mislukt</translation>
    </message>
    <message>
        <source>A data block was refused</source>
        <translation>Een gegevensblok is geweigerd</translation>
    </message>
    <message>
        <source>Failed to send ending frame</source>
        <translation>Het eindframe kon niet worden verzonden</translation>
    </message>
    <message>
        <source>Loading was cancelled</source>
        <translation>Het laden is geannuleerd</translation>
    </message>
    <message>
        <source>No response from the terminal</source>
        <translation>Geen antwoord van de terminal</translation>
    </message>
</context>
<context>
    <name>VEXAThread</name>
    <message>
        <source>Loading request failed - error : </source>
        <translation>Het laadverzoek is mislukt - fout: </translation>
    </message>
    <message>
        <source>A NACK was received : </source>
        <translation>Er is een NACK ontvangen: </translation>
    </message>
    <message>
        <source>Timeout when sending data</source>
        <translation>Time-out bij het verzenden van de gegevens</translation>
    </message>
</context>
</TS>
