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
</TS>
