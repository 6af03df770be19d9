"""A controller built by others is called by the console: every record is whole in both directions."""

import copy
import unittest

import headend
from korvel.general.ttypes import RFInputId
from korvel.hub_module.ttypes import ControllerTaskIsNotReady, SATRFInput, TDTRFInput

SEEDS = range(5)


def ten_inputs(seed):
    """A random status whose RF inputs are the ten that there are, all switched off."""
    status = headend.random_status(seed)
    records = headend.RandomRecords(seed + 1000)
    status.tdtRFInputs = {id: records.record(TDTRFInput) for id in range(RFInputId.TDT1, RFInputId.TDT2 + 1)}
    status.satRFInputs = {id: records.record(SATRFInput) for id in range(RFInputId.SAT1, RFInputId.SAT8 + 1)}
    for rf_input in list(status.tdtRFInputs.values()) + list(status.satRFInputs.values()):
        rf_input.config.enabled = False
    return status


class SessionTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.controller = headend.Controller(None, None).serve()

    def start(self, seed):
        self.controller.config = headend.random_config(seed)
        self.controller.status = ten_inputs(seed)
        self.controller.calls.clear()
        self.controller.not_ready = None

    def test_a_fetched_configuration_is_committed_whole(self):
        for seed in SEEDS:
            with self.subTest(seed=seed):
                self.start(seed)
                config = copy.deepcopy(self.controller.config)
                headend.run_console([], "commit\n")
                self.assertEqual(self.controller.calls, [("getHeadendConfig",), ("setHeadendConfig", config)])

    def test_rf_inputs_are_switched(self):
        self.start(7)
        tdt1, tdt2 = (copy.deepcopy(self.controller.status.tdtRFInputs[id].config) for id in (1, 2))
        sat3 = copy.deepcopy(self.controller.status.satRFInputs[RFInputId.SAT3].config)
        headend.run_console([], "rfinput enable tdt2\nrfinput enable SAT3\n")
        tdt2.enabled = sat3.enabled = True
        status = ("getHeadendStatus",)
        self.assertEqual(self.controller.calls,
                         [("getHeadendConfig",), status, ("setTDTRFInputConfig", tdt1, tdt2), status,
                          status, ("setSATRFInputConfig", RFInputId.SAT3, sat3), status])

    def test_a_controller_that_is_not_ready_is_reported(self):
        self.start(8)
        self.controller.not_ready = ControllerTaskIsNotReady(reason="é")
        self.assertIn("> ERROR: Could not set LineupConfig to ControllerTask\n> ", headend.run_console([], "commit\n"))


if __name__ == "__main__":
    unittest.main()
