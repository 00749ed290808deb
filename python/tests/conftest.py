# SPDX-License-Identifier: MIT
"""build/<preset>/python/pytest sets PYTHONPATH; a bare `python3 -m pytest
python/tests` falls back to the host preset's build."""
import os
import sys

try:
    import qel  # noqa: F401
except ImportError:
    sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "..", "build", "host", "python"))
    import qel  # noqa: F401  (build first: cmake --preset host && cmake --build --preset host)
