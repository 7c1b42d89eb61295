// What accessibility tools are told about the settings window beyond what the toolkit tells them: that it is a window,
// and that its boxes are groups. Main thread only.
#pragma once

namespace tollvane {

// Installs it for the whole program, once, however often it is called. Needs a QApplication.
void describeFormsToAccessibility();

}  // namespace tollvane
