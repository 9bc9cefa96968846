import QtQuick

// The colours and measures of the overlay and of the first start's window.
QtObject {
    required property QtObject look

    readonly property bool dark: look.dark
    readonly property bool contrast: look.highContrast

    readonly property color background: contrast ? (dark ? "#000000" : "#ffffff") : (dark ? "#1b1b20" : "#fbfbfd")
    readonly property color border: contrast ? foreground : (dark ? "#3a3a44" : "#d9d9e2")
    readonly property color foreground: contrast ? (dark ? "#ffffff" : "#000000") : (dark ? "#f2f2f5" : "#1d1d22")
    readonly property color dim: contrast ? foreground : (dark ? "#a0a0ad" : "#686876")
    readonly property color chip: contrast ? background : (dark ? "#2a2a32" : "#efeff4")
    readonly property color accent: contrast ? (dark ? "#ffe94a" : "#0a22c9") : (dark ? "#9b9aff" : "#5350d6")
    readonly property color textOnAccent: contrast ? background : (dark ? "#16161a" : "#ffffff")
    readonly property color recording: contrast ? (dark ? "#ff6b6b" : "#b00012") : "#e5484d"
    readonly property color warning: contrast ? (dark ? "#ffb454" : "#8a3a00") : (dark ? "#ffb454" : "#b85c00")
    readonly property int borderWidth: contrast ? 2 : 1

    readonly property int textSize: 14
    readonly property int smallSize: 12
}
