"""The command ``python -m orva.batch``."""

import signal
import sys

if __name__ == "__main__":
    # Ctrl-C waits until the command can answer it; what it needs takes a second or two to import.
    signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGINT})
    from ._command import main

    sys.exit(main())
