# SPDX-License-Identifier: MIT
"""Every docstring example runs and prints what it says; help(qel) renders."""
import doctest
import pydoc

import numpy as np
import pytest

import qel


def documented():
    for name in sorted(dir(qel)):
        obj = getattr(qel, name)
        if name.startswith("_") or not callable(obj):
            continue
        yield name, obj
        if isinstance(obj, type):
            for attr in ("__init__", "process", "reset"):
                if attr in vars(obj):
                    yield f"{name}.{attr}", vars(obj)[attr]


@pytest.mark.parametrize("name,obj", list(documented()), ids=lambda v: v if isinstance(v, str) else "")
def test_docstring_has_formula_and_runs(name, obj):
    doc = obj.__doc__ or ""
    assert doc.strip(), f"{name} has no docstring"
    parser = doctest.DocTestParser()
    test = parser.get_doctest(doc, {"np": np, "qel": qel}, name, None, 0)
    runner = doctest.DocTestRunner(optionflags=doctest.NORMALIZE_WHITESPACE)
    runner.run(test)
    assert runner.failures == 0, f"{name}: a docstring example failed (see output above)"


def test_public_functions_have_examples():
    for name, obj in documented():
        if "." not in name:
            assert ">>>" in obj.__doc__, f"{name} has no example"


def test_module_doc_and_help_render():
    assert ">>>" in qel.__doc__
    text = pydoc.render_doc(qel, renderer=pydoc.plaintext)
    for name in ("Fir", "FirDecimator", "FirInterpolator", "DelayLine", "normalize", "dump"):
        assert name in text
    test = doctest.DocTestParser().get_doctest(qel.__doc__, {}, "qel", None, 0)
    runner = doctest.DocTestRunner(optionflags=doctest.NORMALIZE_WHITESPACE)
    runner.run(test)
    assert runner.failures == 0


def test_readme_example_runs(capsys):
    import os
    import re
    readme = os.path.join(os.path.dirname(__file__), "..", "..", "README.md")
    blocks = re.findall(r"```python\n(.*?)```", open(readme).read(), re.S)
    assert blocks, "README has no python example"
    exec(compile(blocks[-1], "README.md", "exec"), {})
    assert float(capsys.readouterr().out) < 1e-5


def test_example_script_writes_a_png(tmp_path):
    import os
    import subprocess
    import sys
    script = os.path.join(os.path.dirname(__file__), "..", "..", "examples", "python",
                          "fir_response.py")
    png = tmp_path / "fir.png"
    env = dict(os.environ, PYTHONPATH=os.path.dirname(qel.__file__), MPLCONFIGDIR=str(tmp_path))
    subprocess.run([sys.executable, script, str(png)], check=True, env=env, capture_output=True)
    assert png.read_bytes()[:8] == b"\x89PNG\r\n\x1a\n"
