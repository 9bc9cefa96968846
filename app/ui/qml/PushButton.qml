import QtQuick
import QtQuick.Controls.Basic

Button {
    id: button

    required property OverlayTheme theme
    property bool main: false

    implicitHeight: 38
    leftPadding: 18
    rightPadding: 18
    Accessible.name: text
    Keys.onReturnPressed: click()
    Keys.onEnterPressed: click()

    contentItem: Text {
        text: button.text
        textFormat: Text.PlainText
        font.pixelSize: 14
        font.weight: Font.Medium
        color: button.main ? button.theme.textOnAccent : button.theme.foreground
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
    background: Rectangle {
        radius: 10
        color: button.main ? button.theme.accent : button.theme.chip
        opacity: button.down ? 0.8 : 1
        border.width: button.visualFocus ? 2 : button.theme.contrast ? 1 : 0
        border.color: button.theme.foreground
    }
}
