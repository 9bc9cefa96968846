import QtQuick
import Vocalith.Ui

Item {
    id: row

    required property QtObject overlay
    required property OverlayTheme theme
    required property bool mirrored

    implicitHeight: 36

    Rectangle {
        id: dot

        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        width: 12
        height: 12
        radius: 6
        color: row.theme.recording
    }

    LevelBars {
        anchors.left: dot.right
        anchors.leftMargin: 16
        anchors.right: time.left
        anchors.rightMargin: 16
        height: parent.height
        model: row.overlay
        mirrored: row.mirrored
        fading: !row.theme.contrast
        color: row.theme.contrast ? row.theme.foreground : row.theme.accent
    }

    Text {
        id: time

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        text: row.overlay.elapsed
        textFormat: Text.PlainText
        color: row.theme.foreground
        font.pixelSize: 16
        font.weight: Font.Medium
    }
}
