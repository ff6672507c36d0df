// Compares heads and flows of EPANET input files as EPANET and as tavell solve them.
//
//   node compare.mjs TAVELL FILE.inp ...
//
// TAVELL is the command. Every file is compared at time 0 and, when it has a line "; compare at SECONDS", at that time
// too; "; compare frozen" imports with frozen pressure valves. Controls and rules are taken out of EPANET's network, as
// an import leaves them out. The environment variable TAVELL_NETWORKS names a folder of further files, Net1.inp to
// Net3.inp; without it they are skipped.
//
// Exit status 0: all agree; 1: some do not; 2: the comparison could not be made.
import { execFileSync } from "node:child_process";
import { existsSync, readFileSync } from "node:fs";
import { basename, join } from "node:path";
import {
  CountType, FlowUnits, HeadLossType, LinkProperty, LinkType, NodeProperty, Option, Project, TimeParameter, Workspace,
} from "epanet-js";

const cubicMetresPerSecond = 10; // EPANET 2.3; the package has no name for it
const foot = 0.3048;
const usGallon = 3.785411784e-3;
const day = 86400;
// [m3/s]
const flowUnit = {
  [FlowUnits.CFS]: foot ** 3,
  [FlowUnits.GPM]: usGallon / 60,
  [FlowUnits.MGD]: (1e6 * usGallon) / day,
  [FlowUnits.IMGD]: (1e6 * 4.54609e-3) / day,
  [FlowUnits.AFD]: foot ** 3 / 1.9837,
  [FlowUnits.LPS]: 1e-3,
  [FlowUnits.LPM]: 1e-3 / 60,
  [FlowUnits.MLD]: 1e3 / day,
  [FlowUnits.CMH]: 1 / 3600,
  [FlowUnits.CMD]: 1 / day,
  [cubicMetresPerSecond]: 1,
};
const isUsUnit = (unit) => [FlowUnits.CFS, FlowUnits.GPM, FlowUnits.MGD, FlowUnits.IMGD, FlowUnits.AFD].includes(unit);
const kinematicViscosity = 1.1e-5 * foot * foot; // [m2/s], EPANET's water
const largestDifference = 1e-3; // of the range of heads, and of the largest flow
const leastReynolds = 5000; // below, the friction of Darcy-Weisbach pipes differs by intention

/** Heads [m], flows [m3/s] and Reynolds numbers by name, as EPANET has them at a time [s]. */
function solveWithEpanet(workspace, path, time) {
  const project = new Project(workspace);
  workspace.writeFile("network.inp", readFileSync(path));
  project.open("network.inp", "network.rpt", "network.bin");
  try {
    while (project.getCount(CountType.ControlCount) > 0) project.deleteControl(1);
    while (project.getCount(CountType.RuleCount) > 0) project.deleteRule(1);
    project.setTimeParameter(TimeParameter.PatternStart, project.getTimeParameter(TimeParameter.PatternStart) + time);
    project.setOption(Option.Accuracy, 1e-8);
    project.setOption(Option.Trials, 500);
    project.openH();
    project.initH(0);
    project.runH();
    const unit = project.getFlowUnits();
    const length = isUsUnit(unit) ? foot : 1;
    const diameterUnit = isUsUnit(unit) ? foot / 12 : 1e-3;
    const isDarcyWeisbach = project.getOption(Option.HeadlossForm) === HeadLossType.DW;
    const viscosity = kinematicViscosity * project.getOption(Option.SpViscos);
    const heads = new Map();
    for (let i = 1; i <= project.getCount(CountType.NodeCount); ++i)
      heads.set(project.getNodeId(i), project.getNodeValue(i, NodeProperty.Head) * length);
    const links = new Map();
    for (let i = 1; i <= project.getCount(CountType.LinkCount); ++i) {
      const flow = project.getLinkValue(i, LinkProperty.Flow) * flowUnit[unit];
      const isPipe = [LinkType.Pipe, LinkType.CVPipe].includes(project.getLinkType(i));
      const diameter = project.getLinkValue(i, LinkProperty.Diameter) * diameterUnit;
      const reynolds = isDarcyWeisbach && isPipe ? (4 * Math.abs(flow)) / (Math.PI * diameter * viscosity) : Infinity;
      const ends = project.getLinkNodes(i);
      links.set(project.getLinkId(i), {
        flow,
        isCompared: reynolds > leastReynolds,
        ends: [project.getNodeId(ends.node1), project.getNodeId(ends.node2)],
      });
    }
    return { heads, links };
  } finally {
    project.close();
  }
}

/** Heads [m] and flows [m3/s] by name, as tavell has them. */
function solveWithTavell(tavell, path, options) {
  const text = execFileSync(tavell, ["solve", path, "--format", "json", "--units", "si", ...options], {
    encoding: "utf8",
    maxBuffer: 1 << 28,
    stdio: ["ignore", "pipe", "ignore"],
  });
  const document = JSON.parse(text);
  const heads = new Map(document.nodes.map((node) => [node.name, node.head]));
  const flows = new Map(document.elements.map((element) => [element.name, element.volume_flow]));
  return { heads, flows };
}

/** The largest differences of heads over the head range and of flows over the largest flow, with their names. */
function compare(epanet, own) {
  const compared = new Set();
  for (const link of epanet.links.values()) if (link.isCompared) link.ends.forEach((end) => compared.add(end));
  const values = [...epanet.heads.values()];
  const range = Math.max(...values) - Math.min(...values);
  const largestFlow = Math.max(...[...epanet.links.values()].map((link) => Math.abs(link.flow)));
  const worst = { head: 0, node: "-", flow: 0, link: "-", range, compared: 0 };
  for (const [name, head] of epanet.heads) {
    const value = own.heads.get(name);
    if (!compared.has(name) || value === null) continue;
    ++worst.compared;
    const difference = Math.abs(value - head) / range;
    if (!(difference <= worst.head)) Object.assign(worst, { head: difference, node: name });
  }
  for (const [name, link] of epanet.links) {
    if (!link.isCompared) continue;
    const difference = Math.abs((own.flows.get(name) ?? 0) - link.flow) / largestFlow;
    if (!(difference <= worst.flow)) Object.assign(worst, { flow: difference, link: name });
  }
  return worst;
}

/** A time [s] as HH:MM:SS. */
function clock(time) {
  return [Math.floor(time / 3600), Math.floor(time / 60) % 60, time % 60].join(":");
}

const percent = (value) => `${(100 * value).toFixed(4)} %`;

async function main([tavell, ...files]) {
  if (!tavell || files.length === 0) {
    console.error("usage: node compare.mjs TAVELL FILE.inp ...");
    return 2;
  }
  const folder = process.env.TAVELL_NETWORKS;
  for (const name of ["Net1.inp", "Net2.inp", "Net3.inp"]) {
    if (folder && existsSync(join(folder, name))) files.push(join(folder, name));
    else console.log(`${name}: skipped, TAVELL_NETWORKS does not name its folder`);
  }
  const workspace = new Workspace();
  await workspace.loadModule();
  let status = 0;
  for (const path of files) {
    const text = readFileSync(path, "latin1");
    const times = [0, ...[...text.matchAll(/^; compare at (\d+)/gm)].map((match) => Number(match[1]))];
    const frozen = /^; compare frozen/m.test(text) ? ["--freeze-valves"] : [];
    for (const time of times) {
      const epanet = solveWithEpanet(workspace, path, time);
      const own = solveWithTavell(tavell, path, [...frozen, ...(time > 0 ? ["--time", clock(time)] : [])]);
      const worst = compare(epanet, own);
      const agrees = worst.compared > 0 && worst.head <= largestDifference && worst.flow <= largestDifference;
      if (!agrees) status = 1;
      console.log(
        `${agrees ? "agrees" : "DIFFERS"}  ${basename(path)} at ${time} s: heads ${percent(worst.head)} of ` +
          `${worst.range.toFixed(2)} m (node ${worst.node}), flows ${percent(worst.flow)} (link ${worst.link}), ` +
          `${worst.compared} of ${epanet.heads.size} nodes`,
      );
    }
  }
  return status;
}

main(process.argv.slice(2)).then(
  (status) => (process.exitCode = status),
  (error) => {
    console.error(error.message);
    process.exitCode = 2;
  },
);
