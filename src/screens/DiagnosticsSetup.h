#pragma once

namespace bv {

class AppModel;

// Crash and hang reports for the desktop program (window and tray alike): installs the crash
// handler, collects what an earlier crash left, starts the GUI thread's hang watchdog, and
// gives the diagnostics room the clipboard and the folder opener it lacks below the GUI.
// Does nothing for a model without live data.
void installDiagnostics(AppModel& model);

} // namespace bv
