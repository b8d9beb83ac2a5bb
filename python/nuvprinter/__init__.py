"""Resin 3D printers: find them, ask and set them, send them jobs and firmware, watch them.

    import nuvprinter

    for found in nuvprinter.find():
        with nuvprinter.Printer.open(found) as printer:
            print(found.serial, printer.get_state())
"""

from .printer import Call, Printer, SearchOptions, SendOptions, Watch, check_file, find, set_log, version
from .results import (AccessPoint, Check, Error, Event, EventKind, Finding, Identity, Job, JobCounts, JobRecord,
                      JobResult, Laser, Link, LogLevel, Network, Outcome, OutcomeKind, Part, Port, PrinterState,
                      Progress, Resin, ResinState, Result, Scaling, ScanUnit, Security, Sensors, Stage, State,
                      Versions)

__all__ = ["AccessPoint", "Call", "Check", "Error", "Event", "EventKind", "Finding", "Identity", "Job", "JobCounts",
           "JobRecord", "JobResult", "Laser", "Link", "LogLevel", "Network", "Outcome", "OutcomeKind", "Part",
           "Port", "Printer", "PrinterState", "Progress", "Resin", "ResinState", "Result", "Scaling", "ScanUnit",
           "SearchOptions", "SendOptions", "Security", "Sensors", "Stage", "State", "Versions", "Watch",
           "check_file", "find", "set_log", "version"]
