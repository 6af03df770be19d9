"""A headend as another program would see or build it: records, a controller and the console.

Uses the interface definition and the stock Thrift library alone. Needs in its environment PYTHONPATH (the
code generated from the interface definition) and BUILT_CONSOLE (the console's path); LINEUP_CONSOLE may
name another console to drive.
"""

import copy
import os
import random
import subprocess
import threading

from korvel.hub_module import WebSrv
from korvel.hub_module.ttypes import HeadendConfig, HeadendStatus
from thrift.protocol import TBinaryProtocol, TJSONProtocol
from thrift.server import TServer
from thrift.Thrift import TType
from thrift.transport import TSocket, TTransport

PORT = 9190
CONSOLE = os.environ.get("LINEUP_CONSOLE") or os.environ["BUILT_CONSOLE"]
PIECES = ["a", "Canal", " ", "é", "Ñ", "ß", '"', "'", "\\", "/", "\n", "\r", "\t", "\b", "\f", "\0", "\x01", "\x1f",
          "\x7f", "✓", "✕", "日", "\U0001f600", "{", "]", ",", ":"]


class RandomRecords:
    """Records whose every field is filled; the same for the same seed."""

    def __init__(self, seed):
        self.random = random.Random(seed)

    def record(self, kind):
        result = kind()
        for field in filter(None, kind.thrift_spec):
            setattr(result, field[2], self.value(field[1], field[3]))
        return result

    def value(self, kind, details):
        if kind == TType.BOOL:
            return self.random.random() < 0.5
        if kind == TType.I32:
            return self.integer(32)
        if kind == TType.I64:
            return self.integer(64)
        if kind == TType.DOUBLE:
            return self.random.uniform(-1, 1) * 10 ** self.random.randint(-300, 300)
        if kind == TType.STRING:
            return "".join(self.random.choices(PIECES, k=self.random.randint(1, 20)))
        if kind == TType.STRUCT:
            return self.record(details[0])
        if kind == TType.LIST:
            return [self.value(details[0], details[1]) for _ in range(self.random.randint(2, 4))]
        if kind == TType.SET:
            return {self.value(details[0], details[1]) for _ in range(self.random.randint(2, 4))}
        if kind == TType.MAP:
            return {self.value(details[0], details[1]): self.value(details[2], details[3])
                    for _ in range(self.random.randint(2, 4))}
        raise TypeError("no random value for type %d" % kind)

    def integer(self, bits):
        """Over the whole range, its ends and small numbers included."""
        least, most = -2 ** (bits - 1), 2 ** (bits - 1) - 1
        return self.random.choice([self.random.randint(least, most), self.random.randint(-9, 99), least, most])


def random_config(seed):
    return RandomRecords(seed).record(HeadendConfig)


def random_status(seed):
    return RandomRecords(seed).record(HeadendStatus)


def read_file(path):
    """The configuration that a file holds, and what the file holds after it."""
    with open(path, "rb") as file:
        transport = TTransport.TMemoryBuffer(file.read())
    config = HeadendConfig()
    config.read(TJSONProtocol.TJSONProtocol(transport))
    return config, transport.cstringio_buf.read()


def write_file(path, config):
    transport = TTransport.TMemoryBuffer()
    config.write(TJSONProtocol.TJSONProtocol(transport))
    with open(path, "wb") as file:
        file.write(transport.getvalue())


class Controller:
    """Keeps a configuration and a status, and remembers the calls as tuples of a name and arguments."""

    def __init__(self, config, status):
        self.config = config
        self.status = status
        self.calls = []
        self.not_ready = None  # an exception with which every call is answered

    def called(self, *call):
        self.calls.append(copy.deepcopy(call))
        if self.not_ready is not None:
            raise self.not_ready

    def getHeadendConfig(self):
        self.called("getHeadendConfig")
        return self.config

    def getHeadendStatus(self):
        self.called("getHeadendStatus")
        return self.status

    def setHeadendConfig(self, config):
        self.called("setHeadendConfig", config)
        self.config = config
        return self.status

    def setTDTRFInputConfig(self, tdt1, tdt2):
        self.called("setTDTRFInputConfig", tdt1, tdt2)
        self.status.tdtRFInputs[1].config = tdt1
        self.status.tdtRFInputs[2].config = tdt2

    def setSATRFInputConfig(self, id, config):
        self.called("setSATRFInputConfig", id, config)
        self.status.satRFInputs[id].config = config

    def serve(self):
        """Serves on the controller's port until the program ends."""
        socket = TSocket.TServerSocket(host="127.0.0.1", port=PORT)
        socket.listen()
        socket.listen = lambda: None  # the server would bind a second time
        server = TServer.TSimpleServer(WebSrv.Processor(self), socket, TTransport.TFramedTransportFactory(),
                                       TBinaryProtocol.TBinaryProtocolFactory())
        threading.Thread(target=server.serve, daemon=True).start()
        return self


def run_console(arguments, typed=""):
    """Runs the console to its end; returns what it printed."""
    result = subprocess.run([CONSOLE] + arguments, input=typed.encode(), stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, timeout=100, check=False)
    if result.returncode != 0 or result.stderr:
        raise RuntimeError("the console ended with status %d: %r" % (result.returncode, result.stderr))
    return result.stdout.decode()
