// errors.h: the faults that end a solve.
#pragma once

#include <exception>
#include <string>

class lcnNET_var;

namespace lcn
{

/// The network cannot be solved. The reason is in the control record's Messages, but for the text of an empty
/// list.
class FatalException : public std::exception
{
public:
    explicit FatalException(std::string message) : m_message(std::move(message)) {}
    const char* what() const noexcept override { return m_message.c_str(); }

private:
    std::string m_message;
};

/// Error codes of lcnErrmsg; any other code is itself reported.
enum ErrorCode {
    kNodeMissing = 8,
    kElementMissing = 9,
    kTemperatureWithoutPressure = 16,
    kCurveError = 26,
    kElementContradicts = 32,
    kNoInternalNodes = 33
};

/// Appends the diagnostic of code to var.Messages, then throws FatalException with its text. a, element, b
/// and node are the host's numbers; which of them a code uses is in the table in errors.cpp.
[[noreturn]] void lcnErrmsg(lcnNET_var& var, int code, int a, int element, int b, int node);

}  // namespace lcn
