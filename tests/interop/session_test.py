"""A controller built by others serves a whole session of the console."""

import copy
import unittest

import headend
from korvel.general.ttypes import RFInputId
from korvel.hub_module.ttypes import (ControllerTaskIsNotReady, EmptyInputService, EmptyInputServiceConfig,
                                      ENCInputServiceConfig, IPMux, LineupEntryKind, LineupIPEntryConfig,
                                      LineupRFEntryConfig, PLSItem, SATRFInput, TDTRFInput)
from korvel.enc_module.ttypes import BasicENCSettings
from korvel.general.ttypes import OutputAddress
from korvel.module.ttypes import ModuleChainAddress
from korvel.rfchannels.ttypes import RFChannelInfo

SEEDS = range(5)
GREETING = "Enter 'help' and press return for help\n"
CLEAN = "> "
PENDING = "(changes to commit) > "
PLS_QUESTION = ("Enter the information of the non-standard PLS item:\n"
                " plsType                      plsCode\n"
                " (0 Auto | 1 Gold | 2 Root)   131070 \n")


def smallest_free_key(services):
    key = 1
    while key in services:
        key += 1
    return key


def running_config(seed):
    """Random, but with an IP input in a known place and scan settings in a known state."""
    config = headend.random_config(seed)
    for place, ip_input in enumerate(config.ipInputs.values()):
        ip_input.slot, ip_input.interfaceId = 7, place
    config.lineupConfig.globalConfig.cofdmScanEnabled = False
    return config


def ten_inputs(seed):
    """A random status whose RF inputs are the ten that there are, all switched off."""
    status = headend.random_status(seed)
    records = headend.RandomRecords(seed + 1000)
    status.tdtRFInputs = {id: records.record(TDTRFInput) for id in range(RFInputId.TDT1, RFInputId.TDT2 + 1)}
    status.satRFInputs = {id: records.record(SATRFInput) for id in range(RFInputId.SAT1, RFInputId.SAT8 + 1)}
    for rf_input in list(status.tdtRFInputs.values()) + list(status.satRFInputs.values()):
        rf_input.config.enabled = False
    return status


def table(enabled):
    names = ["TDT1", "TDT2"] + ["SAT%d" % number for number in range(1, 9)]
    marks = ["✓" if name in enabled else "✕" for name in names]
    return "\n\n   " + "".join(name + "   " for name in names) + "\n    " + (6 * " ").join(marks) + "\n\n\n"


def add_encoder(config, slot, port, lineups):
    """What "addenc" and its kin do to a lineup that has no slot reserved for television."""
    lineup = config.lineupConfig
    key = smallest_free_key(lineup.encInputServices)
    lineup.encInputServices[key] = ENCInputServiceConfig(
        address=ModuleChainAddress(slot=slot, port=port),
        settings=BasicENCSettings(videoCodec=0, videoResolution=0, videoProfile=3, audioCodec=2, serviceName="",
                                  providerName=""),
        label="")
    name = "ENC %d/%d" % (slot, port)
    if "ip" in lineups:
        lineup.ipEntries.append(LineupIPEntryConfig(
            serviceKey=key, name=name, serviceKind=LineupEntryKind.ENC, outputSelector=0,
            outputAddress=OutputAddress(address="", port=0)))
    if "rf" in lineups:
        lineup.rfEntries.append(LineupRFEntryConfig(serviceKey=key, name=name, serviceKind=LineupEntryKind.ENC,
                                                    channelInfo=no_channel()))


def no_channel():
    return RFChannelInfo(channelIndex=0, channelName="", frequency=0, bandwidth=0)


def reserve_slot(config, service_type):
    lineup = config.lineupConfig
    key = smallest_free_key(lineup.emptyInputServices)
    lineup.emptyInputServices[key] = EmptyInputServiceConfig(
        inputService=EmptyInputService(serviceType=service_type))
    lineup.rfEntries.append(LineupRFEntryConfig(serviceKey=key, name="EMPTY SLOT",
                                                serviceKind=LineupEntryKind.EMPTY, channelInfo=no_channel()))


class SessionTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.controller = headend.Controller(None, None).serve()

    def start(self, seed):
        self.controller.config = running_config(seed)
        self.controller.status = ten_inputs(seed)
        self.controller.calls.clear()
        self.controller.not_ready = None

    def commit_sent(self):
        name, config = self.controller.calls[-1]
        self.assertEqual(name, "setHeadendConfig")
        return config

    def test_a_fetched_configuration_is_committed_whole(self):
        for seed in SEEDS:
            with self.subTest(seed=seed):
                self.start(seed)
                running = copy.deepcopy(self.controller.config)
                self.assertEqual(headend.run_console([], "reset\ncommit\n"),
                                 GREETING + CLEAN + CLEAN + CLEAN + "\n")
                self.assertEqual(self.controller.calls,
                                 [("getHeadendConfig",), ("getHeadendConfig",), ("setHeadendConfig", running)])

    def test_edits_reach_the_controller_beside_everything_else(self):
        for seed in SEEDS:
            with self.subTest(seed=seed):
                self.start(seed)
                expected = copy.deepcopy(self.controller.config)
                printed = headend.run_console(
                    [], "addenc 5 2\nrfaddempty 25\nipaddenc 12 3\nrfaddenc 3 0\naddipmux 7 1 udp://ñ\"✓\n"
                        "tdtscan enable cofdm\naddpls\n2 131070\ncommit\n")
                self.assertEqual(
                    printed, GREETING + CLEAN + 5 * PENDING +
                    "Updated scan type. Please remember to commit the changes.\n" + PENDING +
                    PLS_QUESTION + PENDING + CLEAN + "\n")
                add_encoder(expected, 5, 2, ("ip", "rf"))
                reserve_slot(expected, 25)
                add_encoder(expected, 12, 3, ("ip",))
                add_encoder(expected, 3, 0, ("rf",))
                expected.lineupConfig.globalConfig.cofdmScanEnabled = True
                expected.rfInputsScanConfig.plsItemList.append(PLSItem(plsType=2, plsCode=131070))
                committed = self.commit_sent()
                self.expect_new_mux(expected, committed, 'udp://ñ"✓')
                self.assertEqual(committed, expected)

    def expect_new_mux(self, expected, committed, url):
        """Takes the one new mux of interface 1, whose key is random, over into what is expected."""
        key, = [key for key, ip_input in expected.ipInputs.items() if ip_input.interfaceId == 1]
        known = expected.ipInputs[key].muxes
        uuid, = set(committed.ipInputs[key].muxes) - set(known)
        self.assertRegex(uuid, "^[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$")
        known[uuid] = IPMux(uuid=uuid, url=url, name="", services={}, fecColumns=0, fecRows=0)

    def test_rf_inputs_are_shown_and_switched(self):
        self.start(7)
        before = copy.deepcopy(self.controller.status)
        running = copy.deepcopy(self.controller.config)
        printed = headend.run_console(
            [], "rfinput status\nrfinput enable tdt2\nrfinput enable SAT3\nrfinput disable TDTALL\n"
                "rfinput enable SATALL\n")
        satellite = ["SAT%d" % number for number in range(1, 9)]
        tables = [[], ["TDT2"], ["TDT2", "SAT3"], ["SAT3"], satellite]
        self.assertEqual(printed, GREETING + CLEAN + "".join(table(enabled) + CLEAN for enabled in tables) + "\n")
        status = ("getHeadendStatus",)
        self.assertEqual(
            self.controller.calls,
            [("getHeadendConfig",), status,
             status, self.tdt_call(before, False, True), status,
             status, self.sat_call(before, 5, True), status,
             status, self.tdt_call(before, False, False), self.tdt_call(before, False, False), status,
             status] + [self.sat_call(before, id, True) for id in range(3, 11)] + [status])
        self.assertEqual(self.controller.config, running)

    def tdt_call(self, status, first, second):
        configs = [copy.deepcopy(status.tdtRFInputs[id].config) for id in (1, 2)]
        configs[0].enabled, configs[1].enabled = first, second
        return ("setTDTRFInputConfig", *configs)

    def sat_call(self, status, id, enabled):
        config = copy.deepcopy(status.satRFInputs[id].config)
        config.enabled = enabled
        return ("setSATRFInputConfig", id, config)

    def test_a_controller_that_is_not_ready_is_reported(self):
        self.start(8)
        self.controller.not_ready = ControllerTaskIsNotReady(reason="é")
        self.assertEqual(headend.run_console([], "commit\n"),
                         "ERROR: Could not get current config from ControllerTask\n" + GREETING + CLEAN +
                         "ERROR: Could not set LineupConfig to ControllerTask\n" + CLEAN + "\n")


if __name__ == "__main__":
    unittest.main()
