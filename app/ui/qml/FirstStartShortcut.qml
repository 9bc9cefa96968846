import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

ColumnLayout {
    id: page

    required property QtObject start
    required property OverlayTheme theme

    spacing: 14

    Text {
        Layout.fillWidth: true
        text: qsTr("Choose your shortcut")
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignLeft
        color: page.theme.foreground
        font.pixelSize: 24
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
    }
    Text {
        Layout.fillWidth: true
        text: qsTr("Hold it in any application, speak, and let go: your words stand where the caret is. A short press starts a dictation that the next press ends.")
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignLeft
        lineHeight: 1.2
        color: page.theme.dim
        font.pixelSize: 14
    }

    AbstractButton {
        id: keys

        Layout.fillWidth: true
        Layout.topMargin: 6
        implicitHeight: 84
        Accessible.name: page.start.shortcut !== "" ? qsTr("Shortcut: %1").arg(page.start.shortcut) : qsTr("Shortcut: none")
        onClicked: page.start.recordingShortcut ? page.start.stopRecordingShortcut() : page.start.recordShortcut()

        background: Rectangle {
            radius: 14
            color: page.theme.chip
            border.width: page.start.recordingShortcut || keys.visualFocus ? 2 : page.theme.borderWidth
            border.color: page.start.recordingShortcut ? page.theme.recording
                        : keys.visualFocus ? page.theme.accent : page.theme.border
        }
        contentItem: Item {
            Row {
                visible: !page.start.recordingShortcut && page.start.shortcut !== ""
                anchors.centerIn: parent
                spacing: 8
                layoutDirection: Qt.LeftToRight // keys are written as they stand on the keyboard
                LayoutMirroring.enabled: false

                Repeater {
                    model: page.start.shortcut === "" ? [] : page.start.shortcut.split("+")

                    Rectangle {
                        required property string modelData

                        width: Math.max(40, cap.implicitWidth + 24)
                        height: 40
                        radius: 9
                        color: page.theme.background
                        border.width: page.theme.borderWidth
                        border.color: page.theme.border

                        Text {
                            id: cap

                            anchors.centerIn: parent
                            text: parent.modelData
                            textFormat: Text.PlainText
                            color: page.theme.foreground
                            font.pixelSize: 15
                            font.weight: Font.Medium
                        }
                    }
                }
            }
            Text {
                visible: page.start.recordingShortcut || page.start.shortcut === ""
                anchors.centerIn: parent
                text: page.start.recordingShortcut ? qsTr("Press the keys…") : qsTr("Click here and press the keys")
                textFormat: Text.PlainText
                color: page.start.recordingShortcut ? page.theme.recording : page.theme.dim
                font.pixelSize: 16
            }
        }
    }

    Text {
        Layout.fillWidth: true
        text: page.start.shortcutError !== "" ? page.start.shortcutError
            : page.start.recordingShortcut ? qsTr("Escape leaves the shortcut as it is.")
            : page.start.shortcut !== "" ? qsTr("Click it to choose other keys.") : ""
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignLeft
        color: page.start.shortcutError !== "" ? page.theme.warning : page.theme.dim
        font.pixelSize: 13
    }
    Item {
        Layout.fillHeight: true
    }
}
