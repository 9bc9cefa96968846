import QtQuick

Item {
    id: row

    required property QtObject overlay
    required property OverlayTheme theme

    readonly property bool isError: overlay.state === "error"

    implicitHeight: texts.height

    Rectangle {
        id: sign

        anchors.left: parent.left
        y: 1
        width: 22
        height: 22
        radius: 11
        color: row.isError ? row.theme.warning : row.theme.accent

        Text {
            anchors.centerIn: parent
            text: row.isError ? "!" : "i"
            textFormat: Text.PlainText
            color: row.theme.contrast || !row.theme.dark ? row.theme.background : row.theme.textOnAccent
            font.pixelSize: 14
            font.bold: true
        }
    }

    Column {
        id: texts

        anchors.left: sign.right
        anchors.leftMargin: 12
        anchors.right: parent.right
        spacing: 4

        Text {
            width: parent.width
            text: row.overlay.message
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            maximumLineCount: 4
            elide: Text.ElideRight
            horizontalAlignment: Text.AlignLeft
            color: row.theme.foreground
            font.pixelSize: 15
            font.weight: Font.DemiBold
        }
        Text {
            visible: text !== ""
            width: parent.width
            text: row.overlay.detail
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            maximumLineCount: 5
            elide: Text.ElideRight
            horizontalAlignment: Text.AlignLeft
            color: row.theme.dim
            font.pixelSize: 13
        }
    }
}
