<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="it" sourcelanguage="en">
<context>
    <name>QMainWindow</name>
    <message>
        <source>Select a database</source>
        <translation>Selezionare un database</translation>
    </message>
    <message>
        <source>Database Files (*.db)</source>
        <translation>File di database (*.db)</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>VEXA message</source>
        <translation>Messaggio VEXA</translation>
    </message>
    <message>
        <source>Config file not valid. Click OK to launch application</source>
        <translation>Il file di configurazione non è valido. Fare clic su OK per avviare l&apos;applicazione</translation>
    </message>
</context>
<context>
    <name>VEXAInterface</name>
    <message>
        <source>VEXA Message</source>
        <translation>Messaggio VEXA</translation>
    </message>
    <message>
        <source>Database file does not exist</source>
        <translation>Il file di database non esiste</translation>
    </message>
    <message>
        <source>VEXA message</source>
        <translation>Messaggio VEXA</translation>
    </message>
    <message>
        <source>Loading succeeded</source>
        <translation>Il caricamento è riuscito</translation>
    </message>
    <message>
        <source>The database is not coherent</source>
        <translation>Il database non è coerente</translation>
    </message>
    <message>
        <source>The database could not be opened</source>
        <translation>Impossibile aprire il database</translation>
    </message>
    <message>
        <source>Initialisation protocol failed</source>
        <translation>Il protocollo di inizializzazione non è riuscito</translation>
    </message>
    <message>
        <source>A data block was refused</source>
        <translation>Un blocco di dati è stato rifiutato</translation>
    </message>
    <message>
        <source>Failed to send ending frame</source>
        <translation>Impossibile inviare il frame finale</translation>
    </message>
    <message>
        <source>Loading was cancelled</source>
        <translation>Il caricamento è stato annullato</translation>
    </message>
    <message>
        <source>No response from the terminal</source>
        <translation>Nessuna risposta dal terminale</translation>
    </message>
</context>
<context>
    <name>VEXAThread</name>
    <message>
        <source>Loading request failed - error : </source>
        <translation>La richiesta di caricamento non è riuscita - errore: </translation>
    </message>
    <message>
        <source>A NACK was received : </source>
        <translation>È stato ricevuto un NACK: </translation>
    </message>
    <message>
        <source>Timeout when sending data</source>
        <translation>Tempo scaduto durante l&apos;invio dei dati</translation>
    </message>
</context>
</TS>
