// The two preconditions and the next thing to do about them.
import QtQuick
import QtQuick.Layouts
import orvo.settings

RoundedRectangle {
    function takeFocus() {
        advised.forceActiveFocus(Qt.OtherFocusReason);
        return true;
    }

    borderColor: Theme.setupOutline
    color: Theme.setupFill
    implicitHeight: column.implicitHeight + 30
    radius: 11

    ColumnLayout {
        id: column

        anchors.left: parent.left
        anchors.margins: 16
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        spacing: 13

        Flow {
            Layout.fillWidth: true
            spacing: 30

            Repeater {
                model: View.setupSteps.length

                SetupStep {
                    required property int index

                    step: View.setupSteps[index]
                }
            }
        }
        Divider {
            Layout.fillWidth: true
            color: Theme.setupOutline
        }
        RowLayout {
            spacing: 20

            TitledText {
                detail: View.setupAdvice.detail
                spacing: 2
                title: View.setupAdvice.title
                weight: Font.DemiBold
            }
            PushButton {
                id: advised

                prominent: true
                text: View.setupAdvice.button
                onClicked: View.perform("setup")
            }
        }
    }
}
