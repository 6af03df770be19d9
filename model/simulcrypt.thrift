namespace cpp korvel.thrift.simulcrypt
namespace py korvel.simulcrypt

/** One conditional access system's ECM generator. */
struct EcmGenerator {
  1: i32 superCasId
  2: string host
  3: i32 port
}

struct Config {
  1: bool enabled
  2: i32 networkId
  3: list<EcmGenerator> cpp_type "std::vector<EcmGenerator>" ecmGenerators
}

struct Status {
  1: bool connected
  2: map<i32, string> generatorStates
}
