"""The command zarn-shadow-cluster, also where Dask is not installed."""

import sys


def main() -> int:
    """Run the command, and return its exit status."""
    try:
        from .cluster._command import main as run
    except ModuleNotFoundError as error:
        text = f'needs the package {error.name}: pip install "zarn[cluster]"'
        print(f"zarn-shadow-cluster: {text}", file=sys.stderr)
        return 2
    return run()
