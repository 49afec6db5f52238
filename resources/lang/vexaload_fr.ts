<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name>QMainWindow</name>
    <message>
        <source>Select a database</source>
        <translation>Sélectionner une base de données</translation>
    </message>
    <message>
        <source>Database Files (*.db)</source>
        <translation>Fichiers de base de données (*.db)</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>VEXA message</source>
        <translation>Message VEXA</translation>
    </message>
    <message>
        <source>Config file not valid. Click OK to launch application</source>
        <translation>Le fichier de configuration n&apos;est pas valide. Cliquer sur OK pour lancer l&apos;application</translation>
    </message>
</context>
<context>
    <name>VEXAInterface</name>
    <message>
        <source>VEXA Message</source>
        <translation>Message VEXA</translation>
    </message>
    <message>
        <source>Database file does not exist</source>
        <translation>Le fichier de base de données n&apos;existe pas</translation>
    </message>
    <message>
        <source>VEXA message</source>
        <translation>Message VEXA</translation>
    </message>
    <message>
        <source>Loading succeeded</source>
        <translation>Le chargement a réussi</translation>
    </message>
    <message>
        <source>The database is not coherent</source>
        <translation>La base de données n&apos;est pas cohérente</translation>
    </message>
    <message>
        <source>The database could not be opened</source>
        <translation>La base de données n&apos;a pas pu être ouverte</translation>
    </message>
    <message>
        <source>Initialisation protocol failed</source>
        <translation>Le protocole d&apos;initialisation a échoué</translation>
    </message>
    <message>
        <source>A data block was refused</source>
        <translation>Un bloc de données a été refusé</translation>
    </message>
    <message>
        <source>Failed to send ending frame</source>
        <translation>L&apos;envoi de la trame de fin a échoué</translation>
    </message>
    <message>
        <source>Loading was cancelled</source>
        <translation>Le chargement a été annulé</translation>
    </message>
    <message>
        <source>No response from the terminal</source>
        <translation>Aucune réponse du terminal</translation>
    </message>
</context>
<context>
    <name>VEXAThread</name>
    <message>
        <source>Loading request failed - error : </source>
        <translation>La demande de chargement a échoué - erreur : </translation>
    </message>
    <message>
        <source>A NACK was received : </source>
        <translation>Un NACK a été reçu : </translation>
    </message>
    <message>
        <source>Timeout when sending data</source>
        <translation>Délai dépassé lors de l&apos;envoi des données</translation>
    </message>
</context>
</TS>
