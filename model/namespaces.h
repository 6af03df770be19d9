// Short names for the namespaces of the code that is generated from model/*.thrift.

#pragma once

namespace korvel::thrift::hub_module {}
namespace korvel::thrift::general {}
namespace korvel::thrift::module {}

namespace lineup {

namespace hub_module = korvel::thrift::hub_module;
namespace general = korvel::thrift::general;
namespace module = korvel::thrift::module;

}  // namespace lineup
