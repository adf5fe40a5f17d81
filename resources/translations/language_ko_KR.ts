<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ko_KR" sourcelanguage="en_US">
<context>
    <name>BaseKnobPropertyWidget</name>
    <message>
        <source>LAB_PLUGIN_TITLE</source>
        <translation>제목</translation>
    </message>
    <message>
        <source>LAB_MIC_GOSETTING</source>
        <translation>설정 열기</translation>
    </message>
</context>
<context>
    <name>BasePropertyWidget</name>
    <message>
        <source>LAB_PLUGIN_TITLE</source>
        <translation>제목</translation>
    </message>
</context>
<context>
    <name>BaseSlobsPropertyView</name>
    <message>
        <source>LAB_PLUGIN_LAUNCH_STLOBS</source>
        <translation>Streamlabs Desktop을 실행한 다음 설정 버튼을 눌러 연동하세요.</translation>
    </message>
    <message>
        <source>LAB_INVALID_SELECTION</source>
        <translation>선택한 항목이 현재 장면 컬렉션에 없습니다. 다른 컬렉션에 있거나 삭제되었을 수 있습니다.</translation>
    </message>
    <message>
        <source>LAB_NOTHING_CHOSEN</source>
        <translation>아직 아무것도 선택되지 않았습니다. 표시된 항목이라도 목록에서 선택하면 이 키에 적용됩니다.</translation>
    </message>
</context>
<context>
    <name>DialogIconBuilder</name>
    <message>
        <source>LAB_FILTER_IMAGE_SELECT</source>
        <translation>이미지 선택</translation>
    </message>
    <message>
        <source>LAB_SET_BG_PIC_FIT</source>
        <translation>맞춤</translation>
    </message>
    <message>
        <source>LAB_SET_BG_PIC_FILL</source>
        <translation>채우기</translation>
    </message>
    <message>
        <source>LAB_SET_BG_PIC_STRETCH</source>
        <translation>늘이기</translation>
    </message>
    <message>
        <source>LAB_SET_BG_PIC_TILE</source>
        <translation>바둑판식</translation>
    </message>
    <message>
        <source>LAB_SET_BG_PIC_CENTER</source>
        <translation>가운데</translation>
    </message>
    <message>
        <source>LAB_CANCEL</source>
        <translation>취소</translation>
    </message>
    <message>
        <source>LAB_OK</source>
        <translation>확인</translation>
    </message>
    <message>
        <source>LAB_FILTER_IMAGE_FILES</source>
        <translation>이미지 파일 </translation>
    </message>
    <message>
        <source>LAB_ICON_NO_PICTURE</source>
        <translation>이 파일은 이미지로 표시할 수 없습니다. 아이콘은 그대로 유지됩니다.</translation>
    </message>
    <message>
        <source>LAB_ICON_REPLACES</source>
        <translation>아이콘 폴더에 쓸 수 없습니다. 확인을 누르면 선택한 파일 자체가 바뀝니다.</translation>
    </message>
</context>
<context>
    <name>DialogIconEditMenu</name>
    <message>
        <source>LAB_ICON_EDIT_LOCAL</source>
        <translation>컴퓨터에서 선택</translation>
    </message>
    <message>
        <source>LAB_ICON_EDIT_ICONBUILDER</source>
        <translation>아이콘 빌더</translation>
    </message>
    <message>
        <source>LAB_ICON_EDIT_RESET</source>
        <translation>원래 아이콘으로 되돌리기</translation>
    </message>
</context>
<context>
    <name>IconStateWidget</name>
    <message>
        <source>LAB_TEXT_EDIT</source>
        <translation>텍스트 스타일</translation>
    </message>
    <message>
        <source>LAB_IMG_PX</source>
        <translation>이미지 선택(권장 크기: 150 × 108 px)</translation>
    </message>
    <message>
        <source>LAB_FILTER_IMAGE_SELECT</source>
        <translation>이미지 선택</translation>
    </message>
    <message>
        <source>LAB_FILTER_IMAGE_FILES</source>
        <translation>이미지 파일 </translation>
    </message>
</context>
<context>
    <name>SlobsAudioPropertyView</name>
    <message>
        <source>LAB_MIC_GOSETTING</source>
        <translation>설정 열기</translation>
    </message>
    <message>
        <source>LAB_PLUGIN_SOURCE</source>
        <translation>소스</translation>
    </message>
    <message>
        <source>LAB_TIP_SLOBS_COLLECTION_SWITCH</source>
        <translation>목록은 현재 장면 모음에 따라 바뀝니다</translation>
    </message>
</context>
<context>
    <name>SlobsOutputPropertyView</name>
    <message>
        <source>LAB_MIC_GOSETTING</source>
        <translation>설정 열기</translation>
    </message>
</context>
<context>
    <name>SlobsScenePropertyView</name>
    <message>
        <source>LAB_MIC_GOSETTING</source>
        <translation>설정 열기</translation>
    </message>
    <message>
        <source>LAB_PLUGIN_SCENE</source>
        <translation>장면</translation>
    </message>
    <message>
        <source>LAB_TIP_RELOAD_DEVICES</source>
        <translation>목록 새로 고침</translation>
    </message>
</context>
<context>
    <name>SlobsSourcePropertyView</name>
    <message>
        <source>LAB_MIC_GOSETTING</source>
        <translation>설정 열기</translation>
    </message>
    <message>
        <source>LAB_PLUGIN_SCENE</source>
        <translation>장면</translation>
    </message>
    <message>
        <source>LAB_PLUGIN_SOURCE</source>
        <translation>소스</translation>
    </message>
    <message>
        <source>LAB_TIP_RELOAD_DEVICES</source>
        <translation>목록 새로 고침</translation>
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
        <translation>오디오 음소거/해제</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_RECORD</source>
        <translation>녹화</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_SCENE</source>
        <translation>장면</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_SOURCE</source>
        <translation>소스</translation>
    </message>
    <message>
        <source>LAB_SIDEBAR_STLOBS_STREAM</source>
        <translation>방송</translation>
    </message>
</context>
<context>
    <name>ZoDisplayViewTextSetting</name>
    <message>
        <source>LAB_TEXT_EDIT</source>
        <translation>텍스트 스타일</translation>
    </message>
    <message>
        <source>LAB_CANCEL</source>
        <translation>취소</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_FAMILY</source>
        <translation>글꼴</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_SIZE</source>
        <translation>글자 크기</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_BLOD</source>
        <translation>굵게</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_ITALIC</source>
        <translation>기울임꼴</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_UNDERLINE</source>
        <translation>밑줄</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_LEFT</source>
        <translation>왼쪽 맞춤</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_CENTER</source>
        <translation>가운데 맞춤</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_RIGHT</source>
        <translation>오른쪽 맞춤</translation>
    </message>
    <message>
        <source>LAB_TIP_TEXT_EDIT_COLOR</source>
        <translation>텍스트 색</translation>
    </message>
</context>
</TS>
