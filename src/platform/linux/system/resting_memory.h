// Gives back memory that a resting program does not need. A start reads far more of the toolkit's libraries than is
// used afterwards: tables of the dynamic linker, code that runs once. So do menus and windows. Main thread only; needs
// a QCoreApplication.
#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>
#include <functional>

namespace tollvane {

// Gives back what the heap holds in reserve, and the pages of the program and its libraries that are as they stand in
// the files. The system keeps those in its cache of files until it needs that memory; each one that is used again comes
// back from there, or else from the disk. Parts of a library in which anything was changed, such as a debugger's
// breakpoints, stay. Any thread.
void giveBackMemory();

class RestingMemory : public QObject {
 public:
  // Calls `giveBack` when `rest` has passed since the start, and again each time after a menu or a window has closed.
  explicit RestingMemory(std::chrono::milliseconds rest, std::function<void()> giveBack = giveBackMemory);

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QTimer rest_;
};

}  // namespace tollvane
