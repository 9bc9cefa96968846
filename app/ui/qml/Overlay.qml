import QtQuick

// What the user sees of a dictation. It is as tall as what it has to say.
Item {
    id: root

    required property QtObject overlay
    required property QtObject look
    property bool notch: false
    // Whether the desktop shines through where nothing is drawn; else the window is cut to this shape.
    property bool seesThrough: false
    readonly property int radius: 20

    readonly property OverlayTheme theme: OverlayTheme {
        look: root.look
    }
    readonly property string state_: overlay.state
    readonly property bool working: state_ === "transcribing" || state_ === "processing" || state_ === "speaking"
    readonly property bool telling: state_ === "error" || state_ === "hint"

    implicitWidth: 400
    implicitHeight: column.height + 32

    LayoutMirroring.enabled: look.mirrored
    LayoutMirroring.childrenInherit: true

    Accessible.role: Accessible.StaticText
    Accessible.name: telling ? overlay.message : working ? workingRow.title : qsTr("Recording")
    Accessible.description: telling ? overlay.detail : overlay.question

    Rectangle {
        // the border, and under a cut-out window whatever the cut leaves of the corners
        y: root.notch ? -root.radius : 0
        width: root.width
        height: root.height - y
        radius: root.seesThrough ? root.radius : 0
        color: root.theme.border

        Rectangle {
            anchors.fill: parent
            anchors.margins: root.theme.borderWidth
            radius: root.radius - root.theme.borderWidth
            color: root.theme.background
        }
    }

    Column {
        id: column

        x: 20
        y: 16
        width: root.width - 40
        spacing: 10

        Column {
            visible: root.overlay.question !== "" && !root.telling
            width: parent.width
            spacing: 3

            Text {
                visible: text !== ""
                anchors.left: parent.left
                text: root.overlay.questionTitle
                textFormat: Text.PlainText
                color: root.theme.accent
                font.pixelSize: root.theme.smallSize
                font.weight: Font.DemiBold
            }
            Text {
                width: parent.width
                text: root.overlay.question
                textFormat: Text.PlainText
                wrapMode: Text.Wrap
                maximumLineCount: 4
                elide: Text.ElideRight
                horizontalAlignment: Text.AlignLeft
                color: root.theme.foreground
                font.pixelSize: root.theme.textSize
            }
        }

        RecordingRow {
            visible: root.state_ === "recording"
            width: parent.width
            overlay: root.overlay
            theme: root.theme
            mirrored: root.look.mirrored
        }

        WorkingRow {
            id: workingRow

            visible: root.working
            width: parent.width
            overlay: root.overlay
            theme: root.theme
            moves: root.overlay.visible && root.working && !root.look.reducedMotion
        }

        MessageRow {
            visible: root.telling
            width: parent.width
            overlay: root.overlay
            theme: root.theme
        }

        Item {
            // the last lines of what was understood until now
            visible: !root.telling && (root.overlay.text !== "" || root.overlay.temporaryText !== "")
            width: parent.width
            height: Math.min(words.implicitHeight, 3 * metrics.lineSpacing + 1)
            clip: true

            FontMetrics {
                id: metrics

                font: words.font
            }
            Text {
                id: words

                function plain(text) {
                    return text.replace(/&/g, "&amp;").replace(/</g, "&lt;").replace(/>/g, "&gt;");
                }

                anchors.bottom: parent.bottom
                width: parent.width
                textFormat: Text.StyledText
                text: plain(root.overlay.text)
                      + (root.overlay.text !== "" && root.overlay.temporaryText !== "" ? " " : "")
                      + "<font color=\"" + root.theme.dim + "\">" + plain(root.overlay.temporaryText) + "</font>"
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignLeft
                color: root.theme.foreground
                font.pixelSize: root.theme.textSize
            }
        }

        PromptRow {
            visible: root.state_ === "recording" && (root.overlay.promptName !== "" || root.overlay.numberedPrompts.length > 0)
            width: parent.width
            overlay: root.overlay
            theme: root.theme
        }
    }
}
