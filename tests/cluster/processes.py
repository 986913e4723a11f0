"""A scheduler and workers in processes of their own, which tests can kill."""

import contextlib
import json
import os
import signal
import subprocess
import sys
import time

import distributed

TIMEOUT = 60  # s; only a hang reaches it


def wait_until(condition):
    """Wait until a condition is true, and return it."""
    end = time.monotonic() + TIMEOUT
    while time.monotonic() < end:
        if found := condition():
            return found
        time.sleep(0.01)
    raise TimeoutError("waited in vain")


class Processes:
    """A scheduler and its workers."""

    def __init__(self, folder):
        self._folder = folder
        self._file = folder / "scheduler.json"
        self._workers = []
        self._scheduler = self._start("scheduler", "--port=0", "--dashboard-address=:0")
        self.address = wait_until(self._address)

    def _start(self, kind, *arguments):
        # Messages of workers that are killed are of no interest.
        return subprocess.Popen(
            [sys.executable, "-m", "dask", kind, *arguments, "--host=127.0.0.1",
             f"--scheduler-file={self._file}"], cwd=self._folder, start_new_session=True,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def _address(self):
        with contextlib.suppress(OSError, ValueError):
            return json.loads(self._file.read_text())["address"]

    def client(self):
        return distributed.Client(self.address, timeout="10s")

    def _wait_for_workers(self):
        with self.client() as client:
            wait_until(lambda: len(client.nthreads()) == len(self._workers))

    def add_workers(self, number, *arguments):
        """Start workers; with the argument --nanny they start again when they die."""
        for _ in range(number):
            self._workers.append(self._start(
                "worker", "--nthreads=1", "--memory-limit=0", "--no-dashboard",
                f"--local-directory={self._folder}", *(arguments or ["--no-nanny"])))
        self._wait_for_workers()

    def kill_workers(self):
        """Kill all workers, and their nannies."""
        for worker in self._workers:
            os.killpg(worker.pid, signal.SIGKILL)
            worker.wait()
        self._workers = []

    def lose_workers(self):
        """Kill all workers, and wait until the scheduler knows."""
        self.kill_workers()
        self._wait_for_workers()

    def kill_scheduler(self):
        self._scheduler.kill()
        self._scheduler.wait()

    def close(self):
        self.kill_workers()
        self.kill_scheduler()


def kill_a_worker(client):
    """Kill one worker, but not its nanny, and wait until the scheduler knows."""
    address, pid = next(iter(client.run(os.getpid).items()))
    os.kill(pid, signal.SIGKILL)
    wait_until(lambda: address not in client.nthreads())
