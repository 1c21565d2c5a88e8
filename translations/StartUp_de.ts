<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>corvane::base::business::ApplicationStartupHandler</name>
    <message>
        <source>GUI: The program has already been started.
However, only one instance may run.
Therefore, this instance is terminated.</source>
        <translation>GUI: Das Programm wurde bereits gestartet.
Es darf jedoch nur eine Instanz laufen.
Daher wird diese Instanz beendet.</translation>
    </message>
</context>
<context>
    <name>corvane::base::business::LastStartQuestion</name>
    <message>
        <source>The last start ended while plug-in %1 was loading.</source>
        <translation>Der letzte Start endete, während das Plug-in %1 geladen wurde.</translation>
    </message>
    <message>
        <source>The last start ended while plug-in %1 was initializing.</source>
        <translation>Der letzte Start endete, während das Plug-in %1 initialisiert wurde.</translation>
    </message>
    <message>
        <source>Start without it this time, or disable it until it is enabled again?</source>
        <translation>Diesmal ohne das Plug-in starten, oder es deaktivieren, bis es wieder aktiviert wird?</translation>
    </message>
    <message>
        <source>Start without it this time</source>
        <translation>Diesmal ohne starten</translation>
    </message>
    <message>
        <source>Disable it</source>
        <translation>Deaktivieren</translation>
    </message>
</context>
</TS>
