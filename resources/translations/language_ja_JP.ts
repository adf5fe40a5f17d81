<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja_JP" sourcelanguage="en_US">
<context>
    <name>StreamlabsDll</name>
    <message>
        <source>LAB_SIDEBAR_GROUP_STLOBS</source>
        <translation>Streamlabs Desktop</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_MIXER_AUDIO</source>
        <translation>音声ミュート</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_RECORD</source>
        <translation>録画</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_SCENE</source>
        <translation>シーン</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_SOURCE</source>
        <translation>ソース</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_STREAM</source>
        <translation>配信</translation>
    </message>
</context>
</TS>
