<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="en_US">
<context>
    <name>BaseKnobPropertyWidget</name>
    <message>
        <source>LAB_PLUGIN_TITLE</source>
        <translation>Title</translation>
    </message>
    <message>
        <source>LAB_MIC_GOSETTING</source>
        <translation>Open settings</translation>
    </message>
</context>
<context>
    <name>BasePropertyWidget</name>
    <message>
        <source>LAB_PLUGIN_TITLE</source>
        <translation>Title</translation>
    </message>
</context>
<context>
    <name>BaseSlobsPropertyView</name>
    <message>
        <source>LAB_PLUGIN_LAUNCH_STLOBS</source>
        <translation>Start Streamlabs Desktop, then click the settings button to link it.</translation>
    </message>
    <message>
        <source>LAB_INVALID_SELECTION</source>
        <translation>The chosen entry is not in the scene collection that is in use. It may be in another one, or have been deleted.</translation>
    </message>
    <message>
        <source>LAB_NOTHING_CHOSEN</source>
        <translation>Nothing is chosen yet. Choose an entry, even the one that is shown, and this key uses it.</translation>
    </message>
</context>
<context>
    <name>DialogIconBuilder</name>
    <message>
        <source>LAB_FILTER_IMAGE_SELECT</source>
        <translation>Choose image</translation>
    </message>
    <message>
        <source>LAB_SET_BG_PIC_FIT</source>
        <translation>Fit</translation>
    </message>
    <message>
        <source>LAB_SET_BG_PIC_FILL</source>
        <translation>Fill</translation>
    </message>
    <message>
        <source>LAB_SET_BG_PIC_STRETCH</source>
        <translation>Stretch</translation>
    </message>
    <message>
        <source>LAB_SET_BG_PIC_TILE</source>
        <translation>Tile</translation>
    </message>
    <message>
        <source>LAB_SET_BG_PIC_CENTER</source>
        <translation>Center</translation>
    </message>
    <message>
        <source>LAB_CANCEL</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>LAB_OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>LAB_FILTER_IMAGE_FILES</source>
        <translation>Image files </translation>
    </message>
    <message>
        <source>LAB_ICON_NO_PICTURE</source>
        <translation>This file cannot be shown as a picture. The icon stays as it is.</translation>
    </message>
    <message>
        <source>LAB_ICON_REPLACES</source>
        <translation>The icon folder cannot be written to: OK replaces the chosen file itself.</translation>
    </message>
</context>
<context>
    <name>DialogIconEditMenu</name>
    <message>
        <source>LAB_ICON_EDIT_LOCAL</source>
        <translation>From computer</translation>
    </message>
    <message>
        <source>LAB_ICON_EDIT_ICONBUILDER</source>
        <translation>Icon Builder</translation>
    </message>
    <message>
        <source>LAB_ICON_EDIT_RESET</source>
        <translation>Original icon</translation>
    </message>
</context>
<context>
    <name>IconStateWidget</name>
    <message>
        <source>LAB_TEXT_EDIT</source>
        <translation>Text style</translation>
    </message>
    <message>
        <source>LAB_IMG_PX</source>
        <translation>Choose image (recommended size: 150 × 108 px)</translation>
    </message>
    <message>
        <source>LAB_FILTER_IMAGE_SELECT</source>
        <translation>Choose image</translation>
    </message>
    <message>
        <source>LAB_FILTER_IMAGE_FILES</source>
        <translation>Image files </translation>
    </message>
</context>
<context>
    <name>SlobsAudioPropertyView</name>
    <message>
        <source>LAB_MIC_GOSETTING</source>
        <translation>Open settings</translation>
    </message>
    <message>
        <source>LAB_PLUGIN_SOURCE</source>
        <translation>Source</translation>
    </message>
    <message>
        <source>LAB_TIP_SLOBS_COLLECTION_SWITCH</source>
        <translation>The list follows the current scene collection</translation>
    </message>
</context>
<context>
    <name>SlobsOutputPropertyView</name>
    <message>
        <source>LAB_MIC_GOSETTING</source>
        <translation>Open settings</translation>
    </message>
</context>
<context>
    <name>SlobsScenePropertyView</name>
    <message>
        <source>LAB_MIC_GOSETTING</source>
        <translation>Open settings</translation>
    </message>
    <message>
        <source>LAB_PLUGIN_SCENE</source>
        <translation>Scene</translation>
    </message>
    <message>
        <source>LAB_TIP_RELOAD_DEVICES</source>
        <translation>Reload list</translation>
    </message>
</context>
<context>
    <name>SlobsSourcePropertyView</name>
    <message>
        <source>LAB_MIC_GOSETTING</source>
        <translation>Open settings</translation>
    </message>
    <message>
        <source>LAB_PLUGIN_SCENE</source>
        <translation>Scene</translation>
    </message>
    <message>
        <source>LAB_PLUGIN_SOURCE</source>
        <translation>Source</translation>
    </message>
    <message>
        <source>LAB_TIP_RELOAD_DEVICES</source>
        <translation>Reload list</translation>
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
        <translation>Mute/unmute audio</translation>
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
<context>
    <name>ZoDisplayViewTextSetting</name>
    <message>
        <source>LAB_TEXT_EDIT</source>
        <translation>Text style</translation>
    </message>
    <message>
        <source>LAB_CANCEL</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_FAMILY</source>
        <translation>Font</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_SIZE</source>
        <translation>Font size</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_BLOD</source>
        <translation>Bold</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_ITALIC</source>
        <translation>Italic</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_UNDERLINE</source>
        <translation>Underline</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_LEFT</source>
        <translation>Align left</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_CENTER</source>
        <translation>Align center</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_RIGHT</source>
        <translation>Align right</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_COLOR</source>
        <translation>Text color</translation>
    </message>
</context>
</TS>
