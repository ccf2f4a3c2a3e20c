import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import QtQml.Models
import Brimvale
import Brimvale.Core

// The main window: the sidebar on the left, the selected section on the right.
ApplicationWindow {
    id: window
    // The reclaimable total on the Overview's and Smart Clean's rows, from 1 byte up.
    readonly property string reclaimBadge: AppModel.smartClean.reclaimableBytes >= 1 ? AppModel.smartClean.reclaimableText : ""
    title: "Brimvale"
    width: 1120
    height: 760
    minimumWidth: 820
    minimumHeight: 560
    visible: true
    color: Theme.window

    property string selection: "overview"
    readonly property var sectionNames: ["overview", "devMode", "duplicates", "rules", "watchedFolders",
                                         "space", "activity", "buildWatch", "autoArrange"]

    function select(name) {
        if (sectionNames.indexOf(name) < 0) name = "overview"
        if (selection === name) return
        selection = name
        AppModel.storeSelection(name)
    }

    onSelectionChanged: AppModel.currentScreen = selection
    onVisibleChanged: if (!visible) AppModel.noteSessionEnd()

    Component.onCompleted: {
        AppModel.start()
        const stored = AppModel.storedSelection()
        if (sectionNames.indexOf(stored) >= 0) selection = stored
        AppModel.currentScreen = selection
        window.takeCleanupRequest()
    }

    // A preview asked for while no window was there (a notification, a link) waits in the
    // model until the window can show it.
    function takeCleanupRequest() {
        if (!AppModel.wantsCleanupSheet) return
        AppModel.clearWantsCleanupSheet()
        AppModel.openCleanupPreview()
    }

    // The settings window, made on first use; the tray's "Settings" calls this too.
    property Window settingsWindow: null
    function openSettings() {
        if (!settingsWindow) settingsWindow = settingsComponent.createObject(window)
        settingsWindow.show()
        settingsWindow.raise()
        settingsWindow.requestActivate()
    }
    Component { id: settingsComponent; SettingsWindow {} }

    Connections {
        target: AppModel
        function onFocusRequested() {
            window.select(AppModel.focusSection)
            window.takeCleanupRequest()
        }
    }

    menuBar: MenuBar {
        Menu {
            title: "&Brimvale"
            Action { text: "About Brimvale"; onTriggered: aboutDialog.open() }
            Action { text: "Check for Updates…"; enabled: AppModel.updater.canCheckForUpdates; onTriggered: updateDialog.checkFromMenu() }
            Action { text: "Settings\u2026"; shortcut: "Ctrl+,"; onTriggered: window.openSettings() }
            MenuSeparator {}
            Action { text: "&Quit"; shortcut: "Ctrl+Q"; onTriggered: Qt.quit() }
        }
        Menu {
            title: "&Help"
            Action { text: "Take the Tour"; onTriggered: AppModel.guidance.takeTheTour() }
            MenuSeparator {}
            Action { text: "Copy Version and System Info"; onTriggered: AppModel.diagnostics.copyVersionAndSystemInfo() }
            Action { text: "Send Diagnostics…"; onTriggered: AppModel.diagnostics.sendDiagnostics() }
            // The maker's pages, each only where the deployment names it.
            MenuItem { text: "Brimvale Support"; visible: MakerPages.support.length > 0; height: visible ? implicitHeight : 0; onTriggered: Qt.openUrlExternally(MakerPages.support) }
            MenuItem { text: "Privacy Policy"; visible: MakerPages.privacy.length > 0; height: visible ? implicitHeight : 0; onTriggered: Qt.openUrlExternally(MakerPages.privacy) }
            MenuItem { text: "Terms of Use"; visible: MakerPages.terms.length > 0; height: visible ? implicitHeight : 0; onTriggered: Qt.openUrlExternally(MakerPages.terms) }
        }
        Menu {
            id: viewMenu
            title: "&View"
            Action { text: "Refresh"; shortcut: "Ctrl+R"; onTriggered: AppModel.refreshEverything() }
            MenuSeparator {}
            // One entry per section in case order, each with its Ctrl+digit.
            Instantiator {
                model: AppModel.sections
                delegate: MenuItem {
                    id: sectionItem
                    required property var modelData
                    action: Action {
                        text: sectionItem.modelData.title
                        shortcut: "Ctrl+" + sectionItem.modelData.key
                        onTriggered: AppModel.focusOnSection(sectionItem.modelData.name)
                    }
                }
                onObjectAdded: (index, object) => viewMenu.insertItem(index + 2, object)
                onObjectRemoved: (index, object) => viewMenu.removeItem(object)
            }
        }
    }

    RowLayout {
        anchors.fill: parent
        spacing: 0
        Sidebar {
            Layout.fillHeight: true
            selected: window.selection
            badges: ({ overview: window.reclaimBadge, devMode: window.reclaimBadge,
                       activity: AppModel.activityLog.weekBadge, duplicates: AppModel.duplicates.badge,
                       buildWatch: AppModel.buildWatch.badge })
            onChosen: name => window.select(name)
        }
        Rectangle { Layout.fillHeight: true; implicitWidth: 1; color: Theme.border }
        StackLayout {
            id: pages
            Layout.fillWidth: true
            Layout.fillHeight: true
            currentIndex: Math.max(0, window.sectionNames.indexOf(window.selection))
            OverviewPage {}
            SmartCleanPage {}
            DuplicatesPage {}
            AutoSortPage {}
            AutopilotPage {}
            SpaceMapPage {}
            HistoryPage {}
            BuildWatchPage {}
            AutoArrangePage {}
        }
    }

    Dialog {
        id: aboutDialog
        title: "About Brimvale"
        modal: true
        anchors.centerIn: parent
        standardButtons: Dialog.Ok
        ColumnLayout {
            spacing: 8
            Label { text: "Brimvale"; font.pixelSize: 20; font.bold: true }
            Label {
                width: 360
                Layout.preferredWidth: 360
                wrapMode: Text.WordWrap
                text: "Brimvale finds out where your disk space went and gives back what can safely go. " +
                      "Files go to the Trash, and a preview always comes first."
            }
        }
    }

    CleanupSheet {
        id: cleanupSheet
        onConfirmRuleRequested: { AppModel.folderRules.confirmRule(); AppModel.cleanRun.dismissSheet() }
    }
    BuildWatchDraftSheet {}
    // Guidance: the cue of the screen, the celebration after a clean, first run and the tour.
    CueLine { anchors { right: parent.right; bottom: parent.bottom; margins: 20 } width: Math.min(560, parent.width - 300) }
    CelebrationLayer { anchors.fill: parent }
    FirstRunSheet {}
    TourSheet {}
    UpdateAvailableDialog { id: updateDialog }

    MessageDialog {
        id: errorDialog
        title: "Something went wrong"
        message: AppModel.messages.errorMessage
        visible: AppModel.messages.errorMessage.length > 0
        onClosed: AppModel.messages.dismissError()
    }

    MessageDialog {
        id: noticeDialog
        objectName: "noticeDialog"
        title: AppModel.messages.cleanupNoticeTitle
        message: AppModel.messages.cleanupNoticeMessage
        // An error goes first: only one alert is up at a time.
        visible: AppModel.messages.hasCleanupNotice && AppModel.messages.errorMessage.length === 0
                 && !AppModel.guidance.isOnboardingPresented // never behind the first-run sheet
        onClosed: AppModel.messages.dismissCleanupNotice()
    }
}
