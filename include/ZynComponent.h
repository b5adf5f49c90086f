/// @file
/// Named text parameters, commands and return codes: the interface that all objects of the library share.
#pragma once

#include <cstdint>
#include <map>
#include <string>

/// Names that the interfaces share.
namespace QTD {

/// Arguments and results of one command: name and value, sorted by name. It has no lock of its own: one
/// thread at a time uses it, and a command that it is handed to is done with it when the call is back.
using ARGUMENTS = std::map<std::string, std::string>;

/// The ordered parameter list of a component; opaque to hosts, which pass null where one is asked for.
class PROPERTIES;

}  // namespace QTD

/// Codes in the low 16 bits of a return value. A failure is `0x80000000 | componentID << 16 | code`; 0 is
/// success.
enum ZynErrorCode : uint32_t {
  ZYN_ERR_FAILED = 1,            ///< a step failed without a more exact reason
  ZYN_ERR_NO_STAGE = 2,          ///< from a chain: no stage of that name
  ZYN_ERR_NOT_IMPLEMENTED = 3,   ///< not provided by this object; from a stage: a format it does not handle
  ZYN_ERR_STAGE_EXISTS = 4,      ///< from a chain: a stage of that name exists, or the stage is in the list
  ZYN_ERR_NOT_FOUND = 5,         ///< no parameter of that name or index
  ZYN_ERR_BUFFER_TOO_SMALL = 6,  ///< the value's length is not below the buffer's size
  ZYN_ERR_BAD_ARGUMENT = 7,  ///< null or empty argument, image without size or data, images that do not match
  /// What the operation needs is not there, not yet or no more: window, chain, card, the whole display. From
  /// `DisplayVideo`: an image of another size than prepared.
  ZYN_ERR_NOT_READY = 8,
  ZYN_ERR_BUSY = 9,  ///< a converter is being set up; from a stage or a converter: no memory, no such method
  ZYN_ERR_NOT_SUPPORTED = 10,  ///< a reserved operation or an unknown command
};

/// A list of named text parameters. Any thread may call any operation. The typed stores and reads and
/// `ExecuteCommand` of a controller wait for an image that is being processed, and so does storing
/// "display.bg.color" of a `ZynDisplay`; `SetParameter` does not wait.
///
/// Numbers are text: "%d", "%lld" and "%f" in the C locale; flags are 0 and 1; an empty text reads as 0. A
/// stored text that cannot be read as the number asked for raises `std::invalid_argument` or
/// `std::out_of_range`: the only exceptions that leave the library.
///
/// A component belongs to the object that it was had from, and lives as long as that. Texts are copied in and
/// out. Names and values are any texts; null counts as the empty text where nothing else is said.
///
/// Binary interface: within one major version the virtual functions keep their order and number.
class ZynComponent {
 public:
  virtual ~ZynComponent() = default;

  /// The id that return codes carry in bits 23 to 16; 0xFF for every component of this library.
  virtual uint8_t GetComponentID() = 0;

  /// How many parameters there are now, those that were never set not counted.
  virtual uint32_t GetParameterCount() = 0;

  /// Copies the name at `index`, from 0 in the order of their making, into `buffer` of `*size` bytes, with
  /// its terminator. A null `buffer` only asks whether the index exists. 5: no such index; 6: the buffer is
  /// too small; 7: `size` is null or 0.
  virtual uint32_t GetParameterName(uint32_t index, char* buffer, uint32_t* size) = 0;

  /// As `GetParameterString`.
  virtual uint32_t GetParameter(const char* name, char* buffer, uint32_t* size) = 0;

  /// Stores a text without asking the component's handler, so that nothing acts on it. Null or empty
  /// arguments give 7. A parameter that does not exist is made.
  virtual uint32_t SetParameter(const char* name, const char* value) = 0;

  /// Stores 0, or 1 for every other value. The typed stores ask the component's handler first, which acts on
  /// the value; what it answers other than 0 is returned as it is, without bit 31, and nothing is stored. A
  /// parameter that does not exist is made.
  virtual uint32_t SetParameterBool(const char* name, uint8_t value) = 0;

  /// Stores a whole number of 64 bits; see `SetParameterBool`.
  virtual uint32_t SetParameterInt(const char* name, int64_t value) = 0;

  /// Stores a number with six digits behind the point; see `SetParameterBool`.
  virtual uint32_t SetParameterDouble(const char* name, double value) = 0;

  /// Stores a text, null as the empty one; see `SetParameterBool`.
  virtual uint32_t SetParameterString(const char* name, const char* value) = 0;
  virtual uint32_t SetParameterExtra(const char* name, const void* value) = 0;  ///< reserved: code 10

  /// Reads a flag: 0 or 1. The typed reads ask the component's handler first, which may bring the value up to
  /// date. 5: no such parameter; 7: `result` is null. `*result` changes with success only.
  virtual uint32_t GetParameterBool(const char* name, uint8_t* result) = 0;

  /// Reads a whole number, of which a fraction is cut off; see `GetParameterBool`.
  virtual uint32_t GetParameterInt(const char* name, int64_t* result) = 0;

  /// Reads a number; see `GetParameterBool`.
  virtual uint32_t GetParameterDouble(const char* name, double* result) = 0;

  /// Copies the value with its terminator into `buffer` of `*size` bytes. What stands in the buffer before is
  /// read as a text, so let it begin with a 0. 5: no such parameter; 6: it does not fit; 7: `buffer` or
  /// `size` is null, or the size 0. `*size` is never changed.
  virtual uint32_t GetParameterString(const char* name, char* buffer, uint32_t* size) = 0;
  virtual uint32_t GetParameterExtra(const char* name, void* result) = 0;  ///< reserved: code 10

  /// Runs a command that takes its arguments from the component's parameters and writes its results there. 10
  /// where the component knows no such command; a `ZynDisplay` answers 0 then.
  virtual uint32_t ExecuteCommand(const char* name) = 0;
};

/// Anything that can run a named command: the controller of a display, a stage, a host's receiver of
/// notifications.
///
/// Binary interface: within one major version the virtual functions keep their order and number.
class ZynDisplayCommand {
 public:
  virtual ~ZynDisplayCommand() = default;

  /// The object that shall run the command `name`; a receiver of notifications may name another one. The
  /// caller does not own it. Called on the thread that runs the command. Default: this object.
  virtual ZynDisplayCommand* GetCommandTarget(const char* name) {
    (void)name;
    return this;
  }

  /// Runs the command; `args` carries arguments in and results out and may be null. What the result means is
  /// the command's own matter: of a controller and of stages 1 is done and 0 failed or unknown; of a receiver
  /// 0 leaves the display to do what it does. Commands of the library: any thread. Receivers are called on
  /// the GUI thread or on the messenger thread, as the notification says; those of "notification.image" run
  /// with the display's locks held, and must wait for other threads as little as a stage of
  /// `ZynImgProcessor`. Default: 0.
  virtual uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) {
    (void)name;
    (void)args;
    return 0;
  }
};
