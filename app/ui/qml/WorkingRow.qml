import QtQuick

Item {
    id: row

    required property QtObject overlay
    required property OverlayTheme theme
    required property bool moves

    readonly property bool hasProgress: overlay.state === "transcribing" && overlay.progress > 0
    readonly property string title: overlay.state === "transcribing" ? qsTr("Transcribing…")
                                  : overlay.state === "processing" ? qsTr("Processing…") : qsTr("Speaking…")
    property int step: 0

    implicitHeight: hasProgress ? 34 : 24

    // Three dots that take turns: a change four times a second is enough to show that the work goes on.
    Timer {
        interval: 250
        repeat: true
        running: row.moves
        onTriggered: row.step = (row.step + 1) % 3
    }

    Row {
        id: dots

        anchors.left: parent.left
        y: 9
        spacing: 4

        Repeater {
            model: 3

            Rectangle {
                required property int index

                width: 6
                height: 6
                radius: 3
                color: row.theme.accent
                opacity: !row.moves || row.step === index ? 1 : 0.35
            }
        }
    }

    Text {
        anchors.left: dots.right
        anchors.leftMargin: 12
        height: 24
        verticalAlignment: Text.AlignVCenter
        text: row.title
        textFormat: Text.PlainText
        color: row.theme.foreground
        font.pixelSize: 15
        font.weight: Font.Medium
    }

    Text {
        visible: row.hasProgress
        anchors.right: parent.right
        height: 24
        verticalAlignment: Text.AlignVCenter
        text: Math.round(row.overlay.progress * 100).toLocaleString(Qt.locale(), "f", 0) + " %"
        textFormat: Text.PlainText
        color: row.theme.dim
        font.pixelSize: row.theme.smallSize
    }

    Rectangle {
        visible: row.hasProgress
        anchors.bottom: parent.bottom
        width: parent.width
        height: row.theme.contrast ? 6 : 4
        radius: height / 2
        color: row.theme.chip
        border.width: row.theme.contrast ? 1 : 0
        border.color: row.theme.border

        Rectangle {
            anchors.left: parent.left
            width: Math.max(4, parent.width * row.overlay.progress)
            height: parent.height
            radius: height / 2
            color: row.theme.accent
        }
    }
}
