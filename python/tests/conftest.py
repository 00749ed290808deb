# SPDX-License-Identifier: MIT
"""Finds the built module: build/host/python/pytest sets PYTHONPATH; a bare
`python3 -m pytest python/tests` falls back to the host preset's build."""
import os
import sys

import pytest

try:
    import qel  # noqa: F401
except ImportError:
    here = os.path.dirname(os.path.abspath(__file__))
    sys.path.insert(0, os.path.join(here, "..", "..", "build", "host", "python"))
    try:
        import qel  # noqa: F401
    except ImportError as e:
        raise pytest.UsageError(
            "cannot import the qel module; build it first "
            "(cmake --preset host && cmake --build --preset host) and run "
            "build/host/python/pytest, with Debian's /usr/bin/python3: " + str(e))

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
