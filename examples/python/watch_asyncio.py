"""The state of several printers in a program on asyncio. Usage: watch_asyncio.py ADDRESS..."""

import asyncio
import sys
import threading

import nuvprinter


async def state_of(address: str) -> nuvprinter.State:
    """Asks on a thread of its own. When this is cancelled, so is the call, which ends within a second."""
    cancelled = threading.Event()
    call = nuvprinter.Call(still_wanted=lambda: not cancelled.is_set())

    def ask() -> nuvprinter.State:
        with nuvprinter.Printer.open_address(address, call) as printer:
            return printer.get_state(call)

    asking = asyncio.create_task(asyncio.to_thread(ask))
    try:
        return await asyncio.shield(asking)
    except asyncio.CancelledError:
        cancelled.set()
        await asyncio.wait([asking])
        asking.exception()  # it has been cancelled, which is no news
        raise


async def show(address: str) -> None:
    try:
        print(address, (await asyncio.wait_for(state_of(address), 5)).state)
    except (nuvprinter.Error, asyncio.TimeoutError) as error:
        print(address, str(error) or "no answer")


async def main() -> None:
    await asyncio.gather(*map(show, sys.argv[1:]))


if __name__ == "__main__":
    asyncio.run(main())
