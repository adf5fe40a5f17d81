<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="en_US">
<context>
    <name>StreamlabsDll</name>
    <message>
        <source>LAB_SIDEBAR_GROUP_STLOBS</source>
        <translation>Streamlabs Desktop</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_MIXER_AUDIO</source>
        <translation>Mute Audio</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_RECORD</source>
        <translation>Record</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_SCENE</source>
        <translation>Scene</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_SOURCE</source>
        <translation>Source</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_STREAM</source>
        <translation>Stream</translation>
    </message>
</context>
</TS>
