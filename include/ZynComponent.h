// Named text parameters, commands and return codes: the interface that all objects of the library share.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace QTD {

/// Arguments and results of one command: name and value, sorted by name. It has no lock of its own.
using ARGUMENTS = std::map<std::string, std::string>;

/// The ordered parameter list of a component; opaque to hosts, which pass null where one is asked for.
class PROPERTIES;

}  // namespace QTD

/// Codes in the low 16 bits of a return value. A failure is `0x80000000 | componentID << 16 | code`; 0 is
/// success. Stages and chains give some of them a meaning of their own: 2 no stage of that name, 3 pixel
/// format not handled, 4 a stage of that name exists, 9 no memory.
enum ZynErrorCode : uint32_t {
  ZYN_ERR_FAILED = 1,            ///< a step failed without a more exact reason
  ZYN_ERR_NOT_IMPLEMENTED = 3,   ///< the operation is not provided by this object
  ZYN_ERR_NOT_FOUND = 5,         ///< no parameter of that name or index
  ZYN_ERR_BUFFER_TOO_SMALL = 6,  ///< the value's length is not below the buffer's size
  ZYN_ERR_BAD_ARGUMENT = 7,  ///< null or empty argument, image without size or data, images that do not match
  ZYN_ERR_NOT_READY = 8,     ///< what the operation needs does not exist yet
  ZYN_ERR_BUSY = 9,          ///< a converter is being set up
  ZYN_ERR_NOT_SUPPORTED = 10,  ///< a reserved operation or an unknown command
};

/// A list of named text parameters. Any thread may call any operation.
///
/// Numbers are text: "%d", "%lld" and "%f" in the C locale; flags are 0 and 1. A stored text that cannot be
/// read as the number asked for raises `std::invalid_argument` or `std::out_of_range`.
class ZynComponent {
 public:
  virtual ~ZynComponent() = default;

  /// The id that return codes carry in bits 23 to 16; 0xFF for every component of this library.
  virtual uint8_t GetComponentID() = 0;
  virtual uint32_t GetParameterCount() = 0;

  /// Copies the name at `index` with its terminator. A null `buffer` only asks whether the index exists.
  virtual uint32_t GetParameterName(uint32_t index, char* buffer, uint32_t* size) = 0;
  virtual uint32_t GetParameter(const char* name, char* buffer, uint32_t* size) = 0;

  /// Stores a text without asking the component's handler. Null or empty arguments give 7.
  virtual uint32_t SetParameter(const char* name, const char* value) = 0;

  /// The typed stores ask the component's handler first; a value other than 0 from it is returned as it is
  /// and nothing is stored. A parameter that does not exist is made.
  virtual uint32_t SetParameterBool(const char* name, uint8_t value) = 0;
  virtual uint32_t SetParameterInt(const char* name, int64_t value) = 0;
  virtual uint32_t SetParameterDouble(const char* name, double value) = 0;
  virtual uint32_t SetParameterString(const char* name, const char* value) = 0;
  virtual uint32_t SetParameterExtra(const char* name, const void* value) = 0;  ///< reserved: code 10

  /// The typed reads: 5 when there is no such parameter, 7 when `result` is null.
  virtual uint32_t GetParameterBool(const char* name, uint8_t* result) = 0;
  virtual uint32_t GetParameterInt(const char* name, int64_t* result) = 0;
  virtual uint32_t GetParameterDouble(const char* name, double* result) = 0;

  /// Copies the value with its terminator into `buffer` of `*size` bytes; 6 when it does not fit. `*size` is
  /// never changed.
  virtual uint32_t GetParameterString(const char* name, char* buffer, uint32_t* size) = 0;
  virtual uint32_t GetParameterExtra(const char* name, void* result) = 0;  ///< reserved: code 10

  /// Runs a command that takes its arguments from the component's parameters and writes its results there.
  virtual uint32_t ExecuteCommand(const char* name) = 0;
};

/// Anything that can run a named command: the controller of a display, a stage, a host's receiver of
/// notifications.
class ZynDisplayCommand {
 public:
  virtual ~ZynDisplayCommand() = default;

  /// The object that shall run the command `name`.
  virtual ZynDisplayCommand* GetCommandTarget(const char* name) {
    (void)name;
    return this;
  }

  /// Runs the command; `args` carries arguments in and results out and may be null. What the result means is
  /// the command's own matter.
  virtual uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) {
    (void)name;
    (void)args;
    return 0;
  }
};
