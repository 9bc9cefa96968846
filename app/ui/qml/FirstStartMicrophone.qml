import QtQuick
import QtQuick.Layouts

ColumnLayout {
    id: page

    required property QtObject start
    required property OverlayTheme theme

    spacing: 14

    Text {
        Layout.fillWidth: true
        text: qsTr("Check your microphone")
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
        text: qsTr("Say a few words. Nothing of it is kept.")
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignLeft
        color: page.theme.dim
        font.pixelSize: 14
    }

    Row {
        id: meter

        readonly property int count: 32

        Layout.fillWidth: true
        Layout.topMargin: 12
        spacing: 4
        Accessible.role: Accessible.Indicator
        Accessible.name: qsTr("Level of the microphone")

        Repeater {
            model: meter.count

            Rectangle {
                required property int index

                readonly property bool lit: index < Math.round(page.start.level * meter.count)

                width: (meter.width - (meter.count - 1) * meter.spacing) / meter.count
                height: 36
                radius: 4
                color: !lit ? page.theme.border : index > meter.count * 0.9 ? page.theme.recording : page.theme.accent
            }
        }
    }

    Text {
        Layout.fillWidth: true
        Layout.topMargin: 4
        text: page.start.microphoneProblem !== "" ? page.start.microphoneProblem
            : page.start.heard ? qsTr("Your microphone works.") : qsTr("Listening…")
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignLeft
        lineHeight: 1.2
        color: page.start.microphoneProblem !== "" ? page.theme.warning : page.start.heard ? page.theme.foreground : page.theme.dim
        font.pixelSize: 14
    }
    Item {
        Layout.fillHeight: true
    }
}
