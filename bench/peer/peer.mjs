// Times EPANET on a network of tavell_bench, or compares its heads with those of the library.
//
//   node peer.mjs time FAMILY NODES FOLDER [REPEATS [--wait]]
//   node peer.mjs check FAMILY NODES FOLDER
//
// FOLDER is where "tavell_bench write FAMILY NODES FOLDER" and "tavell_bench solve ..." wrote to. "time" prints one CSV
// line per repeat and stage, as tavell_bench does; with --wait a repeat waits for a line of standard input. A solve is
// openH (ordering and memory), initH and runH (iterations); reading the file is not timed.
//
// Exit status 0: done, and heads agree; 1: they do not agree; 2: it could not be done.
import { readFileSync } from "node:fs";
import { join } from "node:path";
import { createInterface } from "node:readline";
import { AnalysisStatistic, CountType, NodeProperty, Project, Workspace } from "epanet-js";

const warmUpSolves = 5;
const warmUpUpTo = 10000; // nodes; one solve warms up a larger network
const sample = 20; // [ms] that the solves of one repeat fill
const largestDifference = 1e-4; // of the range of heads

async function openNetwork(path) {
  const workspace = new Workspace();
  await workspace.loadModule();
  const project = new Project(workspace);
  workspace.writeFile("network.inp", readFileSync(path));
  project.open("network.inp", "network.rpt", "network.bin");
  return project;
}

/** Times [ms] of one solve, which stays open. */
function solve(project) {
  const start = performance.now();
  project.openH();
  const ordered = performance.now();
  project.initH(0);
  project.runH();
  const end = performance.now();
  return { total: end - start, order: ordered - start, iterate: end - ordered };
}

/** Mean times [ms] of as many solves as fill a sample, at least one. */
function timeSolves(project) {
  const sum = { total: 0, order: 0, iterate: 0 };
  let solves = 0;
  let iterations = 0;
  do {
    const times = solve(project);
    for (const stage in sum) sum[stage] += times[stage];
    ++solves;
    iterations = project.getStatistic(AnalysisStatistic.Iterations);
    project.closeH();
  } while (sum.total < sample);
  for (const stage in sum) sum[stage] /= solves;
  return { ...sum, iterations };
}

/** Highest resident memory of the process [MiB], Node's own included. */
function peakMiB() {
  return process.resourceUsage().maxRSS / 1024;
}

async function time(family, nodes, folder, repeats, waits) {
  const project = await openNetwork(join(folder, `${family}-${nodes}.inp`));
  const solves = nodes <= warmUpUpTo ? warmUpSolves : 1;
  for (let i = 0; i < solves; ++i) {
    solve(project);
    project.closeH();
  }
  console.log("program,family,nodes,repeat,stage,milliseconds,iterations,peakMiB");
  const lines = createInterface({ input: process.stdin })[Symbol.asyncIterator]();
  for (let repeat = 1; repeat <= repeats; ++repeat) {
    if (waits && (await lines.next()).done) break;
    const times = timeSolves(project);
    const write = (stage, milliseconds, iterations, memory) =>
      console.log(
        ["epanet-js", family, nodes, repeat, stage, milliseconds.toPrecision(6), iterations, memory.toFixed(1)].join(),
      );
    write("solve:order", times.order, 0, 0);
    write("solve:iterate", times.iterate, times.iterations, 0);
    write("solve", times.total, times.iterations, peakMiB());
  }
  process.stdin.destroy();
  return 0;
}

/** Head [m] by node name as the library has it, and whether it is compared. */
function readHeads(path) {
  const lines = readFileSync(path, "latin1").trimEnd().split("\n").slice(1);
  return new Map(
    lines.map((line) => {
      const [name, head, compared] = line.split(",");
      return [name, { head: Number(head), isCompared: compared === "1" }];
    }),
  );
}

async function check(family, nodes, folder) {
  const stem = join(folder, `${family}-${nodes}-check`);
  const project = await openNetwork(`${stem}.inp`);
  const own = readHeads(`${stem}.csv`);
  solve(project);
  const count = project.getCount(CountType.NodeCount);
  let lowest = Infinity;
  let highest = -Infinity;
  let compared = 0;
  let worst = { difference: 0, name: "-" };
  for (let i = 1; i <= count; ++i) {
    const name = project.getNodeId(i);
    const head = project.getNodeValue(i, NodeProperty.Head);
    lowest = Math.min(lowest, head);
    highest = Math.max(highest, head);
    if (!own.get(name).isCompared) continue;
    ++compared;
    const difference = Math.abs(own.get(name).head - head);
    if (!(difference <= worst.difference)) worst = { difference, name };
  }
  project.closeH();
  const range = highest - lowest;
  const agrees = count === own.size && compared > 0 && worst.difference <= largestDifference * range;
  console.log(
    `${agrees ? "agrees" : "DIFFERS"}  ${family} ${nodes}: heads within ${(worst.difference / range).toExponential(1)} ` +
      `of their range of ${range.toFixed(2)} m (${worst.name}), ${compared} of ${count} nodes compared`,
  );
  return agrees ? 0 : 1;
}

async function main([task, family, nodes, folder, repeats = "1", wait]) {
  if (task === "check" && folder) return check(family, Number(nodes), folder);
  if (task === "time" && folder) return time(family, Number(nodes), folder, Number(repeats), wait === "--wait");
  console.error("usage: node peer.mjs time FAMILY NODES FOLDER [REPEATS [--wait]]");
  console.error("       node peer.mjs check FAMILY NODES FOLDER");
  return 2;
}

main(process.argv.slice(2)).then(
  (status) => (process.exitCode = status),
  (error) => {
    console.error(`peer.mjs: ${error.message}`);
    process.exitCode = 2;
  },
);
