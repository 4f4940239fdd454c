// The operations of operations_bench in DuckDB, with two threads and in this process:
//
//   node duckdb.mjs FOLDER [--csv] [--runs N] [OPERATION...]
//
// FOLDER has arrival.csv, assoc.csv, origin.csv and site.csv. They are loaded into tables first; with --csv each
// operation reads what it needs of them instead. Answers are tables in memory of the numbers of records: of those
// that DuckDB has anyway where the tables are loaded.
// Every run prints a line of JSON like those of operations_bench.

import {DuckDBInstance} from '@duckdb/node-api';
import {existsSync, rmSync} from 'node:fs';

const types = {
  arrival: `{'sta': 'VARCHAR', 'time': 'DOUBLE', 'arid': 'INTEGER', 'jdate': 'INTEGER', 'stassid': 'INTEGER',
    'chanid': 'INTEGER', 'chan': 'VARCHAR', 'iphase': 'VARCHAR', 'stype': 'VARCHAR', 'deltim': 'DOUBLE',
    'azimuth': 'DOUBLE', 'delaz': 'DOUBLE', 'slow': 'DOUBLE', 'delslo': 'DOUBLE', 'ema': 'DOUBLE',
    'rect': 'DOUBLE', 'amp': 'DOUBLE', 'per': 'DOUBLE', 'logat': 'DOUBLE', 'clip': 'VARCHAR', 'fm': 'VARCHAR',
    'snr': 'DOUBLE', 'qual': 'VARCHAR', 'auth': 'VARCHAR', 'commid': 'INTEGER', 'lddate': 'DOUBLE'}`,
  assoc: `{'arid': 'INTEGER', 'orid': 'INTEGER', 'sta': 'VARCHAR', 'phase': 'VARCHAR', 'belief': 'DOUBLE',
    'delta': 'DOUBLE', 'seaz': 'DOUBLE', 'esaz': 'DOUBLE', 'timeres': 'DOUBLE', 'timedef': 'VARCHAR',
    'azres': 'DOUBLE', 'azdef': 'VARCHAR', 'slores': 'DOUBLE', 'slodef': 'VARCHAR', 'emares': 'DOUBLE',
    'wgt': 'DOUBLE', 'vmodel': 'VARCHAR', 'commid': 'INTEGER', 'lddate': 'DOUBLE'}`,
  origin: `{'lat': 'DOUBLE', 'lon': 'DOUBLE', 'depth': 'DOUBLE', 'time': 'DOUBLE', 'orid': 'INTEGER',
    'evid': 'INTEGER', 'jdate': 'INTEGER', 'nass': 'INTEGER', 'ndef': 'INTEGER', 'ndp': 'INTEGER',
    'grn': 'INTEGER', 'srn': 'INTEGER', 'etype': 'VARCHAR', 'depdp': 'DOUBLE', 'dtype': 'VARCHAR',
    'mb': 'DOUBLE', 'mbid': 'INTEGER', 'ms': 'DOUBLE', 'msid': 'INTEGER', 'ml': 'DOUBLE', 'mlid': 'INTEGER',
    'algorithm': 'VARCHAR', 'auth': 'VARCHAR', 'commid': 'INTEGER', 'lddate': 'DOUBLE'}`,
  site: `{'sta': 'VARCHAR', 'ondate': 'INTEGER', 'offdate': 'INTEGER', 'lat': 'DOUBLE', 'lon': 'DOUBLE',
    'elev': 'DOUBLE', 'staname': 'VARCHAR', 'statype': 'VARCHAR', 'refsta': 'VARCHAR', 'dnorth': 'DOUBLE',
    'deast': 'DOUBLE', 'lddate': 'DOUBLE'}`,
};

// Sums as in view_rows.h. `r` is the number of a record, `n` the place of a row.
const ordered = 'select count(*), sum(r * (n % 1009 + 1)) from (select r, rowid as n from answer)';
const unordered = fields => `select count(*), sum((${fields}) % 1000003) from answer`;

const folder = process.argv[2];
const options = process.argv.slice(3);
const option = (name, other) => {
  const at = options.indexOf(name);
  return at < 0 ? other : options.splice(at, 2)[1];
};
const runs = Number(option('--runs', '5'));
const csvMode = options.includes('--csv');
if (csvMode)
  options.splice(options.indexOf('--csv'), 1);

// The number of a record.
const r = csvMode ? 'r' : 'rowid';
const all = csvMode ? '* exclude (r)' : '*';
const exported = `${folder}/exported-duckdb.csv`;
const unjoined = name => `${folder}/unjoined-duckdb-${name}.csv`;
const joined = `select a.${r} as a, s.${r} as s, o.${r} as o from arrival a join assoc s using (arid)
  join origin o using (orid)`;

// What is run, and what its answer is; `made` unless the answer is a table.
const operations = {
  subset_station: {make: `select ${r} as r from arrival where sta = 'GPDB'`, answer: ordered},
  subset_range: {
    make: `select ${r} as r from arrival where time >= 1000000000 and time < 1150000000
      and snr > 10`, answer: ordered},
  sort_time: {make: `select ${r} as r from arrival order by time`, answer: ordered},
  sort_sta_time: {make: `select ${r} as r from arrival order by sta, time`, answer: ordered},
  join: {make: joined, answer: unordered('31 * a + 17 * s + 7 * o')},
  group_sta: {make: `select sta, list(${r}) as rows from arrival group by sta`,
              answer: 'select count(*), sum(len(rows) * len(rows)) from answer'},
  nojoin: {make: `select a.${r} as r from arrival a
             where not exists (select 1 from assoc s where s.arid = a.arid)`,
           answer: unordered('31 * r')},
  interval_join: {
    make: `select a.${r} as a, s.${r} as s from arrival a join site s on a.sta = s.sta and a.jdate >= s.ondate
      and a.jdate <= case s.offdate when -1 then 9999999 else s.offdate end`,
    answer: unordered('31 * a + 17 * s')},
  theta_join: {
    make: `select a.${r} as a, s.${r} as s from arrival a join site s on a.sta = s.sta and a.jdate >= s.ondate
      and a.jdate < s.offdate and s.offdate <> -1`,
    answer: unordered('31 * a + 17 * s')},
  find_last: {make: async connection => {
                const time = await number(connection, `select time from arrival where ${r} =
                  (select max(${r}) from arrival)`, true);
                return `select min(${r}) as r from arrival where time = ${time}`;
              },
              answer: 'select 1, r from answer'},
  export_csv: {copy: [[`select ${all} from arrival`, exported]],
               answer: `select count(*), sum(arid) from read_csv('${exported}', header = true)`},
  unjoin: {copy: ['arrival', 'assoc', 'origin'].map(
               (name, i) => [`select ${all} from ${name} where ${r} in (select ${'aso'[i]} from joined)`,
                             unjoined(name)]),
           first: `create or replace temp table joined as ${joined} where a.sta = 'GPDB'`,
           answer: `select sum(n), sum(n * w) from (${['arrival', 'assoc', 'origin'].map(
               (name, i) => `select count(*) as n, ${i + 1} as w from read_csv('${unjoined(name)}', header = true)`)
               .join(' union all ')})`},
};

async function number(connection, query, exact) {
  const reader = await connection.runAndReadAll(query);
  const value = reader.getRows()[0][0];
  return exact ? Number(value).toFixed(5) : Number(value);
}

async function main() {
  const instance = await DuckDBInstance.create(':memory:', {threads: '2'});
  const connection = await instance.connect();
  await connection.run('set enable_progress_bar = false');
  const version = (await connection.runAndReadAll('select version()')).getRows()[0][0];
  for (const [name, columns] of Object.entries(types)) {
    const reading = `select *${csvMode ? ', row_number() over () - 1 as r' : ''}
      from read_csv('${folder}/${name}.csv', header = true, auto_detect = false, delim = ',', quote = '"',
                    escape = '"', nullstr = '', columns = ${columns})`;
    const start = process.hrtime.bigint();
    await connection.run(csvMode ? `create view ${name} as ${reading}` : `create table ${name} as ${reading}`);
    if (!csvMode && name === 'arrival')
      console.log(JSON.stringify({engine: 'duckdb', version, operation: 'load_arrival', mode: 'load',
                                  ms: Number(process.hrtime.bigint() - start) / 1e6}));
  }
  const rows = csvMode ? null : await number(connection, 'select count(*) from arrival');
  for (const [name, operation] of Object.entries(operations)) {
    if (options.length > 0 && !options.includes(name))
      continue;
    const make = typeof operation.make === 'function' ? await operation.make(connection) : operation.make;
    let answer = null;
    // Once unmeasured where the tables are loaded, as ours are decoded then.
    for (let run = csvMode ? 0 : -1; run < runs; ++run) {
      for (const [, path] of operation.copy ?? [])
        if (existsSync(path))
          rmSync(path);
      await connection.run('drop table if exists answer');
      const cpu = process.cpuUsage();
      const start = process.hrtime.bigint();
      if (operation.first)
        await connection.run(operation.first);
      if (make)
        await connection.run(`create temp table answer as ${make}`);
      for (const [query, path] of operation.copy ?? [])
        await connection.run(`copy (${query}) to '${path}' (header true)`);
      const ms = Number(process.hrtime.bigint() - start) / 1e6;
      const used = process.cpuUsage(cpu);
      answer ??= (await connection.runAndReadAll(operation.answer)).getRows()[0].map(Number);
      if (run >= 0)
        console.log(JSON.stringify({
          engine: csvMode ? 'duckdb-csv' : 'duckdb', version, operation: name, mode: 'again', rows, ms,
          cpu_ms: (used.user + used.system) / 1e3, peak_mb: Math.round(process.resourceUsage().maxRSS / 1024),
          count: answer[0], checksum: String((await connection.runAndReadAll(operation.answer)).getRows()[0][1])}));
    }
  }
}

await main();
