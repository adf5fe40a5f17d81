<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_US">
<context>
    <name>BaseKnobPropertyWidget</name>
    <message>
        <source>LAB_PLUGIN_TITLE</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>LAB_MIC_GOSETTING</source>
        <translation>Einstellungen öffnen</translation>
    </message>
</context>
<context>
    <name>BasePropertyWidget</name>
    <message>
        <source>LAB_PLUGIN_TITLE</source>
        <translation>Titel</translation>
    </message>
</context>
<context>
    <name>BaseSlobsPropertyView</name>
    <message>
        <source>LAB_PLUGIN_LAUNCH_STLOBS</source>
        <translation>Starte Streamlabs Desktop und verknüpfe es dann über den Einstellungs-Button.</translation>
    </message>
    <message>
        <source>LAB_INVALID_SELECTION</source>
        <translation>Der gewählte Eintrag ist nicht in der aktuellen Szenensammlung. Er kann in einer anderen sein oder gelöscht.</translation>
    </message>
    <message>
        <source>LAB_NOTHING_CHOSEN</source>
        <translation>Noch ist nichts gewählt. Wähle einen Eintrag, auch den angezeigten, dann gilt er für diese Taste.</translation>
    </message>
</context>
<context>
    <name>DialogIconBuilder</name>
    <message>
        <source>LAB_FILTER_IMAGE_SELECT</source>
        <translation>Bild auswählen</translation>
    </message>
    <message>
        <source>LAB_SET_BG_PIC_FIT</source>
        <translation>Anpassen</translation>
    </message>
    <message>
        <source>LAB_SET_BG_PIC_FILL</source>
        <translation>Ausfüllen</translation>
    </message>
    <message>
        <source>LAB_SET_BG_PIC_STRETCH</source>
        <translation>Strecken</translation>
    </message>
    <message>
        <source>LAB_SET_BG_PIC_TILE</source>
        <translation>Kacheln</translation>
    </message>
    <message>
        <source>LAB_SET_BG_PIC_CENTER</source>
        <translation>Zentrieren</translation>
    </message>
    <message>
        <source>LAB_CANCEL</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>LAB_OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>LAB_FILTER_IMAGE_FILES</source>
        <translation>Bilddateien </translation>
    </message>
    <message>
        <source>LAB_ICON_NO_PICTURE</source>
        <translation>Diese Datei lässt sich nicht als Bild anzeigen. Das Symbol bleibt, wie es ist.</translation>
    </message>
    <message>
        <source>LAB_ICON_REPLACES</source>
        <translation>Der Ordner für Symbole ist nicht beschreibbar: OK ersetzt die gewählte Datei selbst.</translation>
    </message>
</context>
<context>
    <name>DialogIconEditMenu</name>
    <message>
        <source>LAB_ICON_EDIT_LOCAL</source>
        <translation>Vom Computer</translation>
    </message>
    <message>
        <source>LAB_ICON_EDIT_ICONBUILDER</source>
        <translation>Icon Builder</translation>
    </message>
    <message>
        <source>LAB_ICON_EDIT_RESET</source>
        <translation>Ursprüngliches Symbol</translation>
    </message>
</context>
<context>
    <name>IconStateWidget</name>
    <message>
        <source>LAB_TEXT_EDIT</source>
        <translation>Textstil</translation>
    </message>
    <message>
        <source>LAB_IMG_PX</source>
        <translation>Bild auswählen (empfohlen: 150 × 108 px)</translation>
    </message>
    <message>
        <source>LAB_FILTER_IMAGE_SELECT</source>
        <translation>Bild auswählen</translation>
    </message>
    <message>
        <source>LAB_FILTER_IMAGE_FILES</source>
        <translation>Bilddateien </translation>
    </message>
</context>
<context>
    <name>SlobsAudioPropertyView</name>
    <message>
        <source>LAB_MIC_GOSETTING</source>
        <translation>Einstellungen öffnen</translation>
    </message>
    <message>
        <source>LAB_PLUGIN_SOURCE</source>
        <translation>Quelle</translation>
    </message>
    <message>
        <source>LAB_TIP_SLOBS_COLLECTION_SWITCH</source>
        <translation>Die Liste richtet sich nach der aktuellen Szenensammlung</translation>
    </message>
</context>
<context>
    <name>SlobsOutputPropertyView</name>
    <message>
        <source>LAB_MIC_GOSETTING</source>
        <translation>Einstellungen öffnen</translation>
    </message>
</context>
<context>
    <name>SlobsScenePropertyView</name>
    <message>
        <source>LAB_MIC_GOSETTING</source>
        <translation>Einstellungen öffnen</translation>
    </message>
    <message>
        <source>LAB_PLUGIN_SCENE</source>
        <translation>Szene</translation>
    </message>
    <message>
        <source>LAB_TIP_RELOAD_DEVICES</source>
        <translation>Liste neu laden</translation>
    </message>
</context>
<context>
    <name>SlobsSourcePropertyView</name>
    <message>
        <source>LAB_MIC_GOSETTING</source>
        <translation>Einstellungen öffnen</translation>
    </message>
    <message>
        <source>LAB_PLUGIN_SCENE</source>
        <translation>Szene</translation>
    </message>
    <message>
        <source>LAB_PLUGIN_SOURCE</source>
        <translation>Quelle</translation>
    </message>
    <message>
        <source>LAB_TIP_RELOAD_DEVICES</source>
        <translation>Liste neu laden</translation>
    </message>
</context>
<context>
    <name>StreamlabsDll</name>
    <message>
        <source>LAB_SIDEBAR_GROUP_STLOBS</source>
        <translation>Streamlabs Desktop</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_MIXER_AUDIO</source>
        <translation>Audio stumm ein/aus</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_RECORD</source>
        <translation>Aufnahme</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_SCENE</source>
        <translation>Szene</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_SOURCE</source>
        <translation>Quelle</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_STREAM</source>
        <translation>Stream</translation>
    </message>
</context>
<context>
    <name>ZoDisplayViewTextSetting</name>
    <message>
        <source>LAB_TEXT_EDIT</source>
        <translation>Textstil</translation>
    </message>
    <message>
        <source>LAB_CANCEL</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_FAMILY</source>
        <translation>Schriftart</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_SIZE</source>
        <translation>Schriftgröße</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_BLOD</source>
        <translation>Fett</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_ITALIC</source>
        <translation>Kursiv</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_UNDERLINE</source>
        <translation>Unterstrichen</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_LEFT</source>
        <translation>Linksbündig</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_CENTER</source>
        <translation>Zentriert</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_RIGHT</source>
        <translation>Rechtsbündig</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_COLOR</source>
        <translation>Textfarbe</translation>
    </message>
</context>
</TS>
