"""python -m zarn.cluster: the command zarn-shadow-cluster."""

import sys

from ._command import main

if __name__ == "__main__":
    sys.exit(main())
