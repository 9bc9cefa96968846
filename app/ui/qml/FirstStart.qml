import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// Three steps: a shortcut, a microphone, a first try.
Rectangle {
    id: root

    required property QtObject start
    required property QtObject look

    readonly property OverlayTheme theme: OverlayTheme {
        look: root.look
    }

    implicitWidth: 600
    implicitHeight: 480
    color: theme.background

    LayoutMirroring.enabled: look.mirrored
    LayoutMirroring.childrenInherit: true

    focus: true
    Keys.onReturnPressed: next()
    Keys.onEnterPressed: next()

    function next() {
        if (start.page < 2)
            start.page += 1;
        else
            start.finish();
    }

    component Heading: Text {
        Layout.fillWidth: true
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignLeft
        color: root.theme.foreground
        font.pixelSize: 24
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
    }
    component Words: Text {
        Layout.fillWidth: true
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignLeft
        lineHeight: 1.2
        color: root.theme.dim
        font.pixelSize: 14
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 36
        spacing: 24

        Row {
            Layout.alignment: Qt.AlignLeft
            spacing: 8

            Repeater {
                model: 3

                Rectangle {
                    required property int index

                    width: root.start.page === index ? 28 : 8
                    height: 8
                    radius: 4
                    color: root.start.page === index ? root.theme.accent : root.theme.border
                }
            }
        }

        StackLayout {
            Layout.fillWidth: true
            Layout.fillHeight: true
            currentIndex: root.start.page

            FirstStartShortcut {
                start: root.start
                theme: root.theme
            }
            FirstStartMicrophone {
                start: root.start
                theme: root.theme
            }

            ColumnLayout {
                spacing: 14

                Heading {
                    text: qsTr("Try it")
                }
                Words {
                    text: root.start.shortcut !== ""
                          ? qsTr("Hold %1, say something and let go.").arg(root.start.shortcut)
                          : qsTr("Start a dictation from the tray's menu and say something.")
                }
                ScrollView {
                    Layout.fillWidth: true
                    Layout.fillHeight: true

                    TextArea {
                        id: field

                        // What can be pasted into asks the clipboard, and waits, whenever that changes: for this very
                        // program, if it has put a dictated text there.
                        readOnly: true
                        wrapMode: TextEdit.Wrap
                        placeholderText: qsTr("Your words appear here.")
                        placeholderTextColor: root.theme.dim
                        color: root.theme.foreground
                        selectionColor: root.theme.accent
                        selectedTextColor: root.theme.textOnAccent
                        font.pixelSize: 16
                        padding: 14
                        Accessible.name: qsTr("Field to try a dictation")
                        Connections {
                            target: root.start
                            function onDictated(text) {
                                field.insert(field.length, text);
                                field.cursorPosition = field.length;
                            }
                        }
                        background: Rectangle {
                            radius: 12
                            color: root.theme.chip
                            border.width: field.activeFocus ? 2 : root.theme.borderWidth
                            border.color: field.activeFocus ? root.theme.accent : root.theme.border
                        }
                    }
                }
            }
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: 12

            PushButton {
                visible: root.start.page > 0
                theme: root.theme
                text: qsTr("Back")
                onClicked: root.start.page -= 1
            }
            Item {
                Layout.fillWidth: true
            }
            PushButton {
                visible: root.start.page < 2
                theme: root.theme
                text: qsTr("Skip")
                onClicked: root.start.finish()
            }
            PushButton {
                theme: root.theme
                main: true
                text: root.start.page < 2 ? qsTr("Next") : qsTr("Done")
                onClicked: root.next()
            }
        }
    }
}
