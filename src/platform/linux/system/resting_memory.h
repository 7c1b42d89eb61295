// Gives back memory that a resting program does not need. A start reads far more of the toolkit's libraries than is
// used afterwards: tables of the dynamic linker, code that runs once. So do menus and windows. Main thread only; needs
// a QApplication.
#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>
#include <functional>

namespace tollvane {

// Gives back what the heap holds in reserve, and the pages with unchanged parts of program files. Those stay in the
// system's cache of files, from which it takes memory first; each one that is used again comes back from there without
// reading the disk. Does nothing while a debugger watches the process, because its breakpoints are changes to such
// pages. Any thread.
void giveBackMemory();

class RestingMemory : public QObject {
 public:
  // Calls `giveBack` when the program has been at rest for some time: after its start, and each time after a menu or a
  // window has closed and no other is open.
  explicit RestingMemory(std::chrono::milliseconds rest, std::function<void()> giveBack = giveBackMemory);

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QTimer rest_;
};

}  // namespace tollvane
