"""What awk, sort and join of the system need for some of the operations."""
import os
import subprocess
import time

TOOLS = {
    "subset_station": "awk '$1 == \"GPDB\"' {arrival}",
    "subset_range": "awk '$2 >= 1000000000 && $2 < 1150000000 && substr($0, 169, 10) + 0 > 10' {arrival}",
    "sort_time": "sort -s -n -k2,2 {arrival}",
    "sort_sta_time": "sort -s -k1,1 -k2,2n {arrival}",
    "join": "join -1 3 -2 1 <(sort -b -k3,3 {arrival}) <(sort -b -k1,1 {assoc}) | sort -b -k27,27 | "
            "join -1 27 -2 5 - <(sort -b -k5,5 {origin})",
}


def measure_tools(path, folder, rows, runs, results):
    out = folder / "tools.out"
    files = {name: f"{path}.{name}" for name in ("arrival", "assoc", "origin")}
    environment = dict(os.environ, LC_ALL="C")
    for name, command in TOOLS.items():
        for _ in range(runs):
            start = time.perf_counter()
            with open(out, "wb") as stream:
                subprocess.run(["bash", "-c", command.format(**files)], check=True, env=environment, stdout=stream)
            taken = time.perf_counter() - start
            count, checksum = tools_answer(out, name)
            results.add([{"engine": "tools", "operation": name, "mode": "again", "rows": rows, "ms": 1e3 * taken,
                          "count": count, "checksum": checksum}])
    out.unlink()


def tools_answer(out, name):
    count = checksum = 0
    with open(out, encoding="utf-8") as lines:
        for line in lines:
            if name == "join":  # the records of assoc can't be told from it
                count += 1
                continue
            checksum += (int(line[25:33]) - 1) * (count % 1009 + 1)
            count += 1
    return count, (None if name == "join" else checksum)
