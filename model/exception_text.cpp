// What an exception of the interface says of itself. The records' texts are not generated: nothing
// prints them, and as virtual functions they would all be linked.

#include <ostream>

#include "hub_module_types.h"

namespace korvel::thrift::hub_module {

std::ostream& operator<<(std::ostream& out, const ControllerTaskIsNotReady& exception) {
  return out << "ControllerTaskIsNotReady(reason=" << exception.reason << ')';
}

}  // namespace korvel::thrift::hub_module
