# SPDX-License-Identifier: MIT
"""Every docstring example prints what it says; so do the README's example
and the example script."""
import doctest
import os
import re
import subprocess
import sys

import numpy as np
import pytest

import qel

ROOT = os.path.join(os.path.dirname(__file__), "..", "..")


def documented():
    yield "qel", qel
    for name in sorted(n for n in dir(qel) if not n.startswith("_") and callable(getattr(qel, n))):
        obj = getattr(qel, name)
        yield name, obj
        for attr in ("__init__", "process", "reset") if isinstance(obj, type) else ():
            yield f"{name}.{attr}", vars(obj)[attr]


@pytest.mark.parametrize("name,obj", list(documented()), ids=lambda v: v if isinstance(v, str) else "")
def test_docstring_examples_run(name, obj):
    doc = obj.__doc__ or ""
    assert "." in name or ">>>" in doc, f"{name} has no example"
    test = doctest.DocTestParser().get_doctest(doc, {"np": np, "qel": qel}, name, None, 0)
    runner = doctest.DocTestRunner(optionflags=doctest.NORMALIZE_WHITESPACE)
    runner.run(test)
    assert doc.strip() and runner.failures == 0, f"{name}: a docstring example failed (see above)"


def test_readme_example_runs(capsys):
    blocks = re.findall(r"```python\n(.*?)```", open(os.path.join(ROOT, "README.md")).read(), re.S)
    exec(compile(blocks[-1], "README.md", "exec"), {})
    assert float(capsys.readouterr().out) < 1e-5


def test_example_script_writes_a_png(tmp_path):
    png = tmp_path / "fir.png"
    env = dict(os.environ, PYTHONPATH=os.path.dirname(qel.__file__), MPLCONFIGDIR=str(tmp_path))
    subprocess.run([sys.executable, os.path.join(ROOT, "examples", "python", "fir_response.py"), str(png)],
                   check=True, env=env, capture_output=True)
    assert png.read_bytes()[:8] == b"\x89PNG\r\n\x1a\n"
