<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="pt" sourcelanguage="en">
<context>
    <name>QMainWindow</name>
    <message>
        <source>Select a database</source>
        <translation>Selecionar uma base de dados</translation>
    </message>
    <message>
        <source>Database Files (*.db)</source>
        <translation>Ficheiros de base de dados (*.db)</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>VEXA message</source>
        <translation>Mensagem VEXA</translation>
    </message>
    <message>
        <source>Config file not valid. Click OK to launch application</source>
        <translation>O ficheiro de configuração não é válido. Clique em OK para iniciar a aplicação</translation>
    </message>
</context>
<context>
    <name>VEXAInterface</name>
    <message>
        <source>VEXA Message</source>
        <translation>Mensagem VEXA</translation>
    </message>
    <message>
        <source>Database file does not exist</source>
        <translation>O ficheiro da base de dados não existe</translation>
    </message>
    <message>
        <source>VEXA message</source>
        <translation>Mensagem VEXA</translation>
    </message>
    <message>
        <source>Loading succeeded</source>
        <translation>O carregamento foi concluído com êxito</translation>
    </message>
    <message>
        <source>The database is not coherent</source>
        <translation>A base de dados não é coerente</translation>
    </message>
    <message>
        <source>The database could not be opened</source>
        <translation>Não foi possível abrir a base de dados</translation>
    </message>
    <message>
        <source>Initialisation protocol failed</source>
        <translation>O protocolo de inicialização falhou</translation>
    </message>
    <message>
        <source>A data block was refused</source>
        <translation>Um bloco de dados foi recusado</translation>
    </message>
    <message>
        <source>Failed to send ending frame</source>
        <translation>Não foi possível enviar a trama final</translation>
    </message>
    <message>
        <source>Loading was cancelled</source>
        <translation>O carregamento foi cancelado</translation>
    </message>
    <message>
        <source>No response from the terminal</source>
        <translation>Sem resposta do terminal</translation>
    </message>
</context>
<context>
    <name>VEXAThread</name>
    <message>
        <source>Loading request failed - error : </source>
        <translation>O pedido de carregamento falhou - erro: </translation>
    </message>
    <message>
        <source>A NACK was received : </source>
        <translation>Foi recebido um NACK: </translation>
    </message>
    <message>
        <source>Timeout when sending data</source>
        <translation>O tempo esgotou-se ao enviar os dados</translation>
    </message>
</context>
</TS>
