<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es" sourcelanguage="en">
<context>
    <name>QMainWindow</name>
    <message>
        <source>Select a database</source>
        <translation>Seleccionar una base de datos</translation>
    </message>
    <message>
        <source>Database Files (*.db)</source>
        <translation>Archivos de base de datos (*.db)</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>VEXA message</source>
        <translation>Mensaje de VEXA</translation>
    </message>
    <message>
        <source>Config file not valid. Click OK to launch application</source>
        <translation>El archivo de configuración no es válido. Haga clic en Aceptar para iniciar la aplicación</translation>
    </message>
</context>
<context>
    <name>VEXAInterface</name>
    <message>
        <source>VEXA Message</source>
        <translation>Mensaje de VEXA</translation>
    </message>
    <message>
        <source>Database file does not exist</source>
        <translation>El archivo de base de datos no existe</translation>
    </message>
    <message>
        <source>VEXA message</source>
        <translation>Mensaje de VEXA</translation>
    </message>
    <message>
        <source>Loading succeeded</source>
        <translation>La carga se ha realizado correctamente</translation>
    </message>
    <message>
        <source>The database is not coherent</source>
        <translation>La base de datos no es coherente</translation>
    </message>
    <message>
        <source>The database could not be opened</source>
        <translation>No se ha podido abrir la base de datos</translation>
    </message>
    <message>
        <source>Initialisation protocol failed</source>
        <translation>El protocolo de inicialización ha fallado</translation>
    </message>
    <message>
        <source>A data block was refused</source>
        <translation>Se ha rechazado un bloque de datos</translation>
    </message>
    <message>
        <source>Failed to send ending frame</source>
        <translation>No se ha podido enviar la trama final</translation>
    </message>
    <message>
        <source>Loading was cancelled</source>
        <translation>La carga se ha cancelado</translation>
    </message>
    <message>
        <source>No response from the terminal</source>
        <translation>El terminal no responde</translation>
    </message>
</context>
<context>
    <name>VEXAThread</name>
    <message>
        <source>Loading request failed - error : </source>
        <translation>La solicitud de carga ha fallado - error: </translation>
    </message>
    <message>
        <source>A NACK was received : </source>
        <translation>Se ha recibido un NACK: </translation>
    </message>
    <message>
        <source>Timeout when sending data</source>
        <translation>Se ha agotado el tiempo de espera al enviar los datos</translation>
    </message>
</context>
</TS>
