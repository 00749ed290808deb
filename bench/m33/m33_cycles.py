#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Estimated Cortex-M33 cycles of marked regions, from QEMU's instruction trace.

A program marks what it measures by calling two empty functions from
bench/m33/marker.c (CMake target qel_m33_marker):

    qel_mark_begin();
    ...measured code...
    qel_mark_end();

A region is every instruction executed after the return of qel_mark_begin, up
to but not including the call of qel_mark_end. count() in counter.h marks two
regions per measurement: an empty call, then the measured call; the second
minus the first is exactly the instruction count that count() returns.

QEMU logs one line per executed instruction with
    qemu-system-arm -M mps2-an505 -cpu cortex-m33 ... -icount shift=0 \\
        -singlestep -d exec,nochain -D TRACE -kernel ELF
and this script decodes each address once from `arm-none-eabi-objdump -d ELF`
and prices it with m33-cycle-table.txt (beside this script; its comments give
the rules). The estimate assumes zero wait states and no bus contention, and
follows the published timing of the nearest documented core, whose pipeline
differs from the M33's in places: read it as a comparison between code
sequences, not as a promise for a chip. Instructions skipped inside an IT
block are priced as executed (the trace has no flags).

Usage:
  m33_cycles.py ELF TRACE            price a trace file (or FIFO) already written
  m33_cycles.py --run ELF [ARGS..]   run ELF under QEMU, stream the trace through
                                     a FIFO (traces are large), print the program's
                                     output and then the regions
  m33_cycles.py --bench LABEL=ELF [LABEL=ELF..]
                                     run the M33 benchmark program built in one or
                                     more forms (e.g. split=... vmla=...) and print
                                     one Markdown table: instructions and estimated
                                     cycles per call (first form) and per unit (each
                                     form), targets met or missed; every traced call
                                     is checked against its SysTick count
  m33_cycles.py --self-test          check the pricing rules on hand-worked sequences
Option: --table FILE (first; default: the table beside this script).
Output of ELF TRACE and --run: one line per region, in order:
  region <n> instructions <i> cycles <c>
Exit status 1 on an unbalanced marker, a failed check or a failed run.
"""

import os
import re
import subprocess
import sys
import tempfile
import threading

HERE = os.path.dirname(os.path.abspath(__file__))
TABLE = os.path.join(HERE, "m33-cycle-table.txt")
CONDS = {"eq", "ne", "cs", "cc", "hs", "lo", "mi", "pl", "vs", "vc", "hi", "ls", "ge", "lt",
         "gt", "le", "al"}
REG_ALIAS = {"sb": "r9", "sl": "r10", "fp": "r11", "ip": "r12", "r13": "sp", "r14": "lr",
             "r15": "pc"}
CORE_REGS = {"r%d" % i for i in range(13)} | {"sp", "lr", "pc"}
BRANCH = {"b", "bl", "blx", "bx", "cbz", "cbnz"}
LOADS = {"ldr", "ldrb", "ldrh", "ldrsb", "ldrsh", "ldrt", "ldrbt", "ldrht", "ldrsbt", "ldrsht",
         "ldrex", "ldrexb", "ldrexh", "lda", "ldab", "ldah", "ldaex", "ldaexb", "ldaexh"}
STORES = {"str", "strb", "strh", "strt", "strbt", "strht", "strex", "strexb", "strexh", "stl",
          "stlb", "stlh", "stlex", "stlexb", "stlexh"}
LDM = {"ldm", "ldmia", "ldmdb", "ldmfd", "ldmea", "pop"}
STM = {"stm", "stmia", "stmdb", "stmfd", "stmea", "push"}
VLDM = {"vldm", "vldmia", "vldmdb", "vpop"}
VSTM = {"vstm", "vstmia", "vstmdb", "vpush"}
VMAC = {"vmla", "vmls", "vnmla", "vnmls", "vfma", "vfms", "vfnma", "vfnms"}
MUL = {"mul", "muls", "mla", "mls", "smull", "umull", "smlal", "umlal", "umaal"}
MUL_PREFIX = ("smul", "smla", "smua", "smus", "smls", "smml", "smmu")
NO_DEST = {"cmp", "cmn", "tst", "teq", "nop", "it", "dmb", "dsb", "isb", "bkpt", "svc", "msr",
           "cpsie", "cpsid", "wfi", "wfe", "sev", "yield", "udf"}
SINGLE_LOADS = {"ldr", "vldr", "vldr64"}  # may pipeline the next single load or store
SINGLE_LS = SINGLE_LOADS | {"str", "str_imm", "vstr"}


def read_table(path):
    """KEY VALUE lines of the cycle table; '#' starts a comment."""
    t = {}
    with open(path) as f:
        for line in f:
            words = line.split("#", 1)[0].split()
            if len(words) == 2:
                t[words[0]] = int(words[1])
    return t


def regs_of(text):
    """Register names in an operand text, canonical (r0..r12, sp, lr, pc, s0..s31)."""
    out = []
    for tok in re.findall(r"\b([a-z]+[0-9]*)(?:-([a-z]+[0-9]*))?", text):
        first, last = (REG_ALIAS.get(t, t) for t in tok)
        if first[0] in "sd" and first[1:].isdigit() and (not last or last[0] == first[0]):
            lo = int(first[1:])
            hi = int(last[1:]) if last else lo
            for k in range(lo, hi + 1):
                out += ["s%d" % (2 * k), "s%d" % (2 * k + 1)] if first[0] == "d" else ["s%d" % k]
        elif first in CORE_REGS:
            out.append(first)
    return out


def base_mnemonic(mn):
    """'ldreq.w' -> 'ldr', 'vmovmi.f32' -> 'vmov', 'bls.n' -> 'b', 'popgt' -> 'pop'."""
    m = mn.split(".", 1)[0]
    known = BRANCH | LOADS | STORES | LDM | STM | VLDM | VSTM | VMAC | MUL | NO_DEST | {
        "vldr", "vstr", "vmov", "vdiv", "vsqrt", "ldrd", "strd", "tbb", "tbh", "sdiv", "udiv"}
    if m not in known and m[-2:] in CONDS and m[:-2] in known:
        m = m[:-2]
    return m


class Insn:
    """One decoded instruction: its pricing class and the registers the rules look at."""

    __slots__ = ("size", "kind", "cost", "nregs", "addr", "dest", "wb", "fsrc", "fdst", "text")

    def __init__(self, size, mnemonic, operands, table):
        ops = re.split(r"[@;<]", operands, 1)[0].strip()
        m = base_mnemonic(mnemonic)
        self.size, self.text = size, (mnemonic + " " + ops).strip()
        self.addr, self.dest, self.wb, self.fsrc, self.fdst = [], [], False, [], []
        self.nregs = 0
        first = ops.split(",", 1)[0]
        bracket = re.search(r"\[([^\]]*)\]", ops)
        if bracket:
            self.addr = regs_of(bracket.group(1))
            self.wb = ops.rstrip().endswith("!") or not ops.rstrip().endswith("]")
        if m in BRANCH:
            kind = "branch"
        elif m in ("tbb", "tbh"):
            kind = "tbb"
        elif re.fullmatch(r"it[te]{0,3}", m):
            kind = "it"
        elif m in LOADS:
            kind, self.dest = "ldr", regs_of(first)
        elif m in STORES:
            reg_offset = bracket and len(self.addr) > 1
            kind = "str" if reg_offset else "str_imm"
        elif m in ("ldrd", "strd"):
            kind = m
        elif m in LDM | STM:
            kind = "ldm" if m in LDM else "stm"
            self.addr = ["sp"] if m in ("pop", "push") else regs_of(first)
            self.nregs = len(regs_of(ops[ops.index("{"):]))
        elif m in VLDM | VSTM:
            kind = "vldm" if m in VLDM else "vstm"
            self.addr = ["sp"] if m in ("vpop", "vpush") else regs_of(first)
            lst = regs_of(ops[ops.index("{"):])
            self.nregs = len(lst)
            (self.fdst if kind == "vldm" else self.fsrc).extend(lst)
        elif m == "vldr":
            kind = "vldr64" if first.strip().startswith("d") else "vldr"
            self.fdst = regs_of(first)
        elif m == "vstr":
            kind, self.fsrc = "vstr", regs_of(first)
        elif m[0] == "v":
            regs = regs_of(ops)
            core = [r for r in regs if not r.startswith("s")]
            fp = [r for r in regs if r.startswith("s")]
            if m == "vmov" and core:
                kind = "vmov_core"
                if regs and regs[0].startswith("s"):
                    self.fdst = fp
                else:
                    self.fsrc = fp
            else:
                kind = "vmac" if m in VMAC else "vdivsqrt" if m in ("vdiv", "vsqrt") else "vfp"
                ndst = len(regs_of(first)) if m not in ("vcmp", "vcmpe", "vmrs", "vmsr") else 0
                self.fdst = fp[:ndst]
                self.fsrc = fp if kind == "vmac" else fp[ndst:]
        elif m in ("sdiv", "udiv"):
            kind, self.dest = "div", regs_of(first)
        elif m in MUL or m.startswith(MUL_PREFIX):
            kind = "mul"
            self.dest = regs_of(ops)[:2 if m.endswith(("ll", "al", "aal")) else 1]
        else:
            kind = "alu"
            self.dest = [] if m in NO_DEST else regs_of(first)[:1]
        self.kind = kind
        per = table["per_reg"]
        self.cost = {
            "ldm": table["ldm_base"] + per * self.nregs,
            "stm": table["stm_base"] + per * self.nregs,
            "vldm": table["vldm_base"] + self.nregs,
            "vstm": table["vstm_base"] + self.nregs,
        }.get(kind) or table[kind]


class Pricer:
    """Prices instructions in trace order; call start() at each region, then step()."""

    def __init__(self, table):
        self.t = table
        self.start()

    def start(self):
        self.cycles = 0  # issue time of the next instruction
        self.fpu_free = 0  # the FPU's multi-cycle operation ends here
        self.ready = {}  # FP register -> cycle its value is ready
        self.prev = None
        self.count = 0

    def step(self, insn, pc, next_pc):
        t, prev = self.t, self.prev
        cost = insn.cost
        kind = insn.kind
        if prev is not None and kind in SINGLE_LS and prev.kind in SINGLE_LOADS and (
                not prev.wb and not set(prev.dest) & set(insn.addr)):
            cost = max(1, cost - t["ls_pipelined"])
        if prev is not None and insn.addr and prev.kind in ("alu", "mul", "div") and (
                set(prev.dest) & set(insn.addr)):
            cost += t["agu_interlock"]
        if next_pc is not None and next_pc != pc + insn.size:
            cost += t["P"]  # taken branch or any other write to PC
        begin = self.cycles
        if kind[0] == "v":
            begin = max([begin, self.fpu_free] + [self.ready.get(r, 0) for r in insn.fsrc])
        end = begin + cost
        issue_end = end
        if kind in ("vmac", "vdivsqrt") and t["fpu_overlap"]:
            issue_end = begin + 1
            self.fpu_free = end
        elif kind[0] == "v":
            self.fpu_free = end
        for r in insn.fdst:
            self.ready[r] = begin + t["vfp_latency"] if kind == "vfp" else end
        self.cycles = issue_end
        self.prev = insn
        self.count += 1

    def total(self):
        return max(self.cycles, self.fpu_free)


def disassemble(elf):
    """Objdump text of the ELF (the arm-none-eabi binutils)."""
    return subprocess.run(["arm-none-eabi-objdump", "-d", elf],
                          check=True, capture_output=True, text=True).stdout


def decode(listing, table):
    """Address (8 hex digits, bytes) -> Insn; function name -> list of its addresses."""
    insns, funcs, cur = {}, {}, None
    for line in listing.splitlines():
        head = re.match(r"^([0-9a-f]+) <(.+)>:$", line)
        if head:
            cur = funcs.setdefault(head.group(2), [])
            continue
        # "addr:<TAB>raw halfwords<TAB>mnemonic<TAB>operands"; data rows have no mnemonic
        fields = line.split("\t")
        if cur is None or len(fields) < 3 or not fields[0].strip().endswith(":"):
            continue
        raw, mnemonic = fields[1].split(), fields[2].strip()
        if mnemonic.startswith(".") or not all(len(h) == 4 for h in raw):
            continue
        addr = int(fields[0].strip()[:-1], 16)
        insns[b"%08x" % addr] = Insn(2 * len(raw), mnemonic, "\t".join(fields[3:]), table)
        cur.append(addr)
    return insns, funcs


def price_trace(lines, insns, funcs, table):
    """Regions of a trace (an iterable of byte lines), as (instructions, cycles) pairs."""
    begin_range = {b"%08x" % a for a in funcs.get("qel_mark_begin", [])}
    end_entry = b"%08x" % min(funcs.get("qel_mark_end", [0]))
    if not begin_range:
        raise SystemExit("m33_cycles: the ELF has no qel_mark_begin (link bench/m33/marker.c)")
    pricer = Pricer(table)
    regions = []
    state = {"in": False, "pending": None, "last": None}

    def feed(pc):  # one confirmed executed instruction
        if state["in"]:
            if pc == end_entry:
                regions.append((pricer.count, pricer.total()))
                state["in"] = False
            else:
                if pc in begin_range:
                    raise SystemExit("m33_cycles: qel_mark_begin inside a region")
                pending = state["pending"]
                if pending is not None:
                    pricer.step(insns[pending], int(pending, 16), int(pc, 16))
                state["pending"] = pc
        elif state["last"] in begin_range and pc not in begin_range:
            state["in"], state["pending"] = True, pc
            pricer.start()
        elif pc == end_entry:
            raise SystemExit("m33_cycles: qel_mark_end without qel_mark_begin")
        state["last"] = pc

    # A logged instruction may not run: QEMU rewinds an I/O access, or stops before
    # it (icount budget), and logs it again when it runs. Hold each line one step.
    held = None
    for line in lines:
        if line.startswith(b"Trace"):
            if held is not None:
                feed(held)
            i = line.index(b"/") + 1
            held = line[i:i + 8]
        elif line.startswith((b"cpu_io_recompile: rewound", b"Stopped execution of TB chain")):
            addr = re.search(rb"(?:to |\[)([0-9a-f]+)", line).group(1).rjust(8, b"0")
            if addr != held:
                raise SystemExit("m33_cycles: unexpected trace line: %r" % line)
            held = None
    if held is not None:
        feed(held)
    if state["in"]:
        raise SystemExit("m33_cycles: the trace ends inside a region")
    return regions


def qemu_command(elf, args, log):
    cfg = ",".join(["enable=on,target=native", "arg=" + elf] +
                   ["arg=" + a.replace(",", ",,") for a in args])
    return ["qemu-system-arm", "-M", "mps2-an505", "-cpu", "cortex-m33", "-nographic", "-monitor",
            "none", "-serial", "none", "-icount", "shift=0", "-singlestep", "-d", "exec,nochain",
            "-D", log, "-semihosting-config", cfg, "-kernel", elf]


def run_traced(elf, args, table):
    """Runs ELF under QEMU with the trace streamed through a FIFO: (program stdout, regions)."""
    insns, funcs = decode(disassemble(elf), table)
    with tempfile.TemporaryDirectory() as tmp:
        fifo = os.path.join(tmp, "trace")
        os.mkfifo(fifo)
        out_path = os.path.join(tmp, "out")
        with open(out_path, "w") as out:
            proc = subprocess.Popen(qemu_command(elf, args, fifo), stdout=out,
                                    stderr=subprocess.STDOUT)
            result = {}

            def reader():
                try:
                    with open(fifo, "rb", buffering=1 << 20) as f:
                        result["regions"] = price_trace(f, insns, funcs, table)
                except SystemExit as e:
                    result["error"] = str(e)
                    proc.kill()
            th = threading.Thread(target=reader)
            th.start()
            status = proc.wait()
            if status != 0 and th.is_alive():
                with open(fifo, "wb"):  # unblock a reader still waiting for the writer
                    pass
            th.join()
        with open(out_path) as f:
            output = f.read()
    if "error" in result:
        raise SystemExit(result["error"])
    if status != 0:
        sys.stdout.write(output)
        raise SystemExit("m33_cycles: %s exited with status %d" % (elf, status))
    return output, result["regions"]


def bench_rows(elf, table):
    """The benchmark program's rows ('qel-row' lines, see counter.h) with traced figures."""
    output, regions = run_traced(elf, [], table)
    rows, failed = [], False
    for line in output.splitlines():
        if not line.startswith("qel-row\t"):
            continue
        _, pair, kernel, size, instr, units, unit, target, why = line.split("\t")
        k = int(pair)
        if 2 * k + 1 >= len(regions):
            raise SystemExit("m33_cycles: no marked call for row %s" % kernel)
        (e_n, e_c), (f_n, f_c) = regions[2 * k], regions[2 * k + 1]
        if f_n - e_n != int(instr):
            print("MISMATCH %s %s in %s: SysTick %s, trace %d instructions" % (
                kernel, size, elf, instr, f_n - e_n), file=sys.stderr)
            failed = True
        rows.append((kernel, size, f_n - e_n, f_c - e_c, float(units), unit, float(target), why))
    if failed:
        raise SystemExit("m33_cycles: the trace and the SysTick counts disagree")
    if not rows:
        raise SystemExit("m33_cycles: %s printed no rows" % elf)
    return rows


def bench(forms, table):
    """Markdown table of the benchmark built in several forms (LABEL=ELF); the first is the
    default: its figures per call, and the targets (estimated cycles per unit) apply to it."""
    runs = [(label, bench_rows(elf, table)) for label, _, elf in (f.partition("=") for f in forms)]
    first = runs[0][1]
    for label, rows in runs[1:]:
        if [r[:2] for r in rows] != [r[:2] for r in first]:
            raise SystemExit("m33_cycles: the %s build printed other rows" % label)
    head = ["kernel", "size", "instr./call", "est. cycles/call"]
    for label, _ in runs:
        head += ["%s: instr./unit" % label, "%s: est. cycles/unit" % label]
    print("| " + " | ".join(head + ["target (%s, est. cycles/unit)" % runs[0][0]]) + " |")
    print("|---|---|" + "---:|" * (len(head) - 2) + "---|")
    for k, (kernel, size, n, c, units, unit, target, why) in enumerate(first):
        cells = ["`%s`" % kernel, size, "%d" % n, "%d" % c]
        for _, rows in runs:
            cells += ["%.2f" % (rows[k][2] / units), "%.2f per %s" % (rows[k][3] / units, unit)]
        verdict = ""
        if target > 0:
            met = c / units <= target + 1e-9
            verdict = "<= %.2f: %s" % (target, "met" if met else "**missed**")
            if why and not met:
                verdict += " (%s)" % why
        print("| " + " | ".join(cells + [verdict]) + " |")


def self_test(table):
    """Sequences priced by hand from the table's rules (P = 2 and the defaults)."""
    cases = [
        # three independent loads back to back: N + 1
        (["ldr r1, [r0]", "ldr r2, [r0, #4]", "ldr r3, [r0, #8]"], 4),
        # a load whose address is the previous load's result does not pipeline
        (["ldr r1, [r0]", "ldr r2, [r1]"], 4),
        # nothing pipelines after a load with write-back or after a store
        (["ldr r1, [r0], #4", "ldr r2, [r0]", "str r2, [r0, #4]", "ldr r3, [r0]"], 2 + 2 + 1 + 2),
        # register-offset store 2, pipelined after a load to 1
        (["str r1, [r0, r2]", "vldr s0, [r0]", "str r1, [r0, r2]"], 2 + 2 + 1),
        # address interlock after data processing
        (["adds r0, #4", "ldr r1, [r0]", "add r2, r3", "vldr s1, [r0]"], 1 + 3 + 1 + 2),
        # VLDM of 8 singles, VPUSH of two doubles, PUSH of three registers
        (["vldmia r0!, {s0-s7}", "vpush {d8-d9}", "push {r4, r5, lr}"], 9 + 5 + 4),
        # VMLA: 1 issue cycle, FPU busy 2 more; integer work overlaps, the next VADD waits
        (["vmla.f32 s0, s1, s2", "adds r0, #1", "vadd.f32 s3, s3, s4"], 4),
        # VDIV keeps the FPU 14 cycles; VMOV to a core register 2
        (["vdiv.f32 s0, s1, s2", "vmov r0, s0"], 14 + 2),
        # VMUL + VADD 2, IT 1, MUL 1, SDIV 7, VSTR 1
        (["vmul.f32 s0, s1, s2", "vadd.f32 s3, s3, s0", "it eq", "muleq r0, r1", "sdiv r0, r1",
          "vstr s3, [r1]"], 2 + 1 + 1 + 7 + 1),
    ]
    failures = 0
    for text, want in cases:
        pricer = Pricer(table)
        for k, line in enumerate(text):
            mn, _, ops = line.partition(" ")
            pricer.step(Insn(4, mn, ops, table), 4 * k, 4 * k + 4)
        if pricer.total() != want:
            print("self-test: %s: %d cycles, expected %d" % (text, pricer.total(), want))
            failures += 1
    # branches: taken pays P, not taken 1; so does a POP that loads PC (1 + N + P)
    for insn, next_pc, want in (("bne.n 8", 8, 3), ("bne.n 8", 4, 1), ("pop {r4, pc}", 64, 5)):
        pricer = Pricer(table)
        mn, _, ops = insn.partition(" ")
        pricer.step(Insn(4, mn, ops, table), 0, next_pc)
        if pricer.total() != want:
            print("self-test: %s to %d: %d, expected %d" % (insn, next_pc, pricer.total(), want))
            failures += 1
    # the trace reader: a rewound or stopped line is dropped; the BL to qel_mark_end is not
    # counted
    listing = ("10000000 <qel_mark_begin>:\n10000000:\t4770 \tbx\tlr\n"
               "10000002 <main>:\n10000002:\tf7ff fffd \tbl\t10000000 <qel_mark_begin>\n"
               "10000006:\t6801 \tldr\tr1, [r0, #0]\n10000008:\t6842 \tldr\tr2, [r0, #4]\n"
               "1000000a:\tf000 f800 \tbl\t1000000e <qel_mark_end>\n"
               "1000000e <qel_mark_end>:\n1000000e:\t4770 \tbx\tlr\n")
    insns, funcs = decode(listing, table)
    trace = [b"Trace 0: 0x1 [0/%s/0/0] x\n" % a for a in
             (b"10000002", b"10000000", b"10000006", b"10000008")]
    trace.insert(3, b"cpu_io_recompile: rewound execution of TB to 10000006\n")
    trace.insert(4, trace[2])
    trace.insert(5, b"Stopped execution of TB chain before 0x1 [10000006] main\n")
    trace.insert(6, trace[2])
    trace += [b"Trace 0: 0x1 [0/%s/0/0] x\n" % a for a in (b"1000000a", b"1000000e")]
    regions = price_trace(trace, insns, funcs, table)
    if regions != [(2, 3)]:
        print("self-test: trace reader gave %s, expected [(2, 3)]" % regions)
        failures += 1
    print("self-test: %s" % ("%d failure(s)" % failures if failures else "passed"))
    return failures == 0


def main(argv):
    table_path = TABLE
    if len(argv) > 1 and argv[0] == "--table":
        table_path, argv = argv[1], argv[2:]
    table = read_table(table_path)
    if argv[:1] == ["--self-test"]:
        return 0 if self_test(table) else 1
    if argv[:1] == ["--bench"] and len(argv) >= 2:
        bench(argv[1:], table)
        return 0
    if argv[:1] == ["--run"] and len(argv) >= 2:
        output, regions = run_traced(argv[1], argv[2:], table)
        sys.stdout.write(output)
    elif len(argv) == 2:
        insns, funcs = decode(disassemble(argv[0]), table)
        with open(argv[1], "rb", buffering=1 << 20) as f:
            regions = price_trace(f, insns, funcs, table)
    else:
        sys.stdout.write(__doc__)
        return 2
    for k, (n, c) in enumerate(regions):
        print("region %d instructions %d cycles %d" % (k, n, c))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
