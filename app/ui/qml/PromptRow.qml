import QtQuick

// Which prompt the words are for, and the keys that choose another.
Flow {
    id: row

    required property QtObject overlay
    required property OverlayTheme theme

    readonly property var numbered: overlay.numberedPrompts
    readonly property bool isNumbered: numbered.indexOf(overlay.promptName) >= 0

    spacing: 6

    component Chip: Rectangle {
        id: chip

        property string key: ""
        property string name: ""
        property bool chosen: false

        width: keyText.width + label.width + 20
        height: 26
        radius: 13
        color: chosen ? row.theme.accent : row.theme.chip
        border.width: row.theme.contrast ? 1 : 0
        border.color: row.theme.border

        Text {
            id: keyText

            anchors.left: parent.left
            anchors.leftMargin: 10
            anchors.verticalCenter: parent.verticalCenter
            width: chip.key === "" ? 0 : implicitWidth + 6
            text: chip.key
            textFormat: Text.PlainText
            color: chip.chosen ? row.theme.textOnAccent : row.theme.dim
            font.pixelSize: row.theme.smallSize
            font.bold: true
            horizontalAlignment: Text.AlignLeft
        }
        Text {
            id: label

            anchors.left: keyText.right
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, 150)
            text: chip.name
            textFormat: Text.PlainText
            elide: Text.ElideRight
            horizontalAlignment: Text.AlignLeft
            color: chip.chosen ? row.theme.textOnAccent : row.theme.foreground
            font.pixelSize: row.theme.smallSize
        }
    }

    Chip {
        visible: row.overlay.promptName !== "" && !row.isNumbered
        name: row.overlay.promptName
        chosen: true
    }

    Repeater {
        model: row.numbered

        Chip {
            required property int index
            required property string modelData

            key: String(index + 1)
            name: modelData
            chosen: modelData === row.overlay.promptName
        }
    }
}
