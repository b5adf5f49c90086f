/// @file
/// The message by which the library tells a host's window about the mouse.
#pragma once

#include <QEvent>
#include <cstdint>

/// An event of type 1280, delivered on the GUI thread to the widget or window whose id stands in the
/// display's parameter "window.command".
///
/// The first word holds the low 16 bits of the display's "system.signature" above the event code, one of
/// `EventCode`. The second word holds y in bits 31 to 16 and x in bits 15 to 0, both in window pixels, as
/// signed 16-bit numbers.
///
/// Presses and releases of the left button are sent: the library waits for the receiver, and reads `result`.
/// The others are posted. The library owns the message; it is gone when the receiver's `event` is back.
class ZynWindowMessage : public QEvent {
 public:
  static constexpr int kMessage = 1280;  ///< the type of the event

  /// The low 16 bits of the first word.
  enum EventCode : uint32_t {
    kLeftPressed = 0x4002,   ///< the left button; sent
    kLeftReleased = 0x4003,  ///< the left button; sent
    kRightClicked = 0x4004,  ///< any button but the left, released without a rectangle; posted
    kMoved = 0x4008,         ///< the mouse has moved; posted
  };

  /// Made by the library, on the GUI thread; a host may make one to send it on.
  ZynWindowMessage(uint64_t first, int64_t second)
      : QEvent(static_cast<QEvent::Type>(kMessage)), firstWord(first), secondWord(second) {}

  uint64_t firstWord;  ///< signature above the event code
  int64_t secondWord;  ///< y above x
  /// 0, or what the receiver sets, read after a message that the library waits for: anything else takes the
  /// press, so that no pan begins, or lets a pan go on after a release.
  int64_t result = 0;
};
