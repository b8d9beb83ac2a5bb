"""python3 -m nuvprinter list [ADDRESS...]: the printers, each as it answers; exit code 1: none."""

import argparse
import sys

from . import Call, Error, Identity, Printer, Result, SearchOptions, find, version


def show(found: Identity) -> None:
    state = "does not answer"
    if found.contact == Result.OK:
        try:
            with Printer.open(found, Call(time_limit=2)) as printer:
                state = str(printer.get_state(Call(time_limit=2)).state)
        except Error as error:
            state = str(error)
    print(f"{found.address or '?':<16} {found.serial or '?':<20} {found.model or '?':<18} {state}", flush=True)


def main() -> int:
    parser = argparse.ArgumentParser(prog="python3 -m nuvprinter", description="Resin 3D printers.")
    parser.add_argument("--version", action="version", version=version())
    commands = parser.add_subparsers(required=True, metavar="COMMAND")
    listing = commands.add_parser("list", help="the printers, each with its state")
    listing.add_argument("address", nargs="*", help="asked in place of all networks")
    addresses = " ".join(parser.parse_args().address) or None
    try:
        printers = find(SearchOptions(addresses=addresses))
    except Error as error:
        print(f"nuvprinter: {error}", file=sys.stderr)
        return 1
    for found in printers:
        show(found)
    return 0 if printers else 1


if __name__ == "__main__":
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        sys.exit(130)
