// Writes the reference of the component's classes, a page a class, into the folder given: from the type library's
// source, the contracts in the headers, the calls and statements of the statement catalogue, and the messages.
import { mkdirSync, readFileSync, readdirSync, writeFileSync } from 'node:fs';

const read = (path) => readFileSync(path, 'utf8');
const out = process.argv[2];
const folders = ['bom', 'view', 'import', 'ecn', 'custbom'];
const TYPES = {
  BSTR: 'String', long: 'Long', VARIANT_BOOL: 'Boolean', 'IDispatch*': 'Object', VARIANT: 'Variant', short: 'Integer',
  double: 'Double',
};

function fail(text) {
  console.error(text);
  process.exit(1);
}

// ---- the type library

// "[in, out] BSTR* ReturnMsg" -> name, type, reference, optional, fallback.
function parameterOf(text) {
  const [, flags, type, name] = /^\[([^\]]*)\]\s*(.*?)(\w+)$/s.exec(text.trim()) ?? fail(`no parameter: ${text}`);
  const byReference = /\bout\b/.test(flags);
  const plain = type.trim().replace(byReference ? /\*$/ : /$^/, '').trim();
  return {
    name,
    type: TYPES[plain] ?? fail(`no type: ${plain}`),
    byReference,
    optional: /\boptional\b/.test(flags),
    fallback: /defaultvalue\(([^)]*)\)/.exec(flags)?.[1],
  };
}

// "a, [in, x] b" cut at the commas that stand outside of brackets.
function parts(text) {
  const found = [''];
  let depth = 0;
  for (const c of text) {
    depth += c === '[' || c === '(' ? 1 : c === ']' || c === ')' ? -1 : 0;
    if (c === ',' && depth === 0) found.push('');
    else found[found.length - 1] += c;
  }
  return found.filter((part) => part.trim());
}

const MEMBER = /\[id\(\d+\)(, propget)?, helpstring\("([^"]*)"\)\]\s*([\w*]+)\s+(\w+)\((.*?)\);/gs;

function classesOf(idl) {
  return [...idl.matchAll(/helpstring\("([^"]*)"\)\]\s*dispinterface _(\w+)\s*\{(.*?)\n {2}\};/gs)].map(
    ([, help, name, body]) => ({
      name,
      help,
      members: [...body.matchAll(MEMBER)].map(([, property, text, result, member, parameters]) => ({
        property: Boolean(property), help: text, result, name: member, parameters: parts(parameters).map(parameterOf),
      })),
    }));
}

function signature({ name, property, result, parameters }) {
  const list = parameters.map((p) => {
    const text = `${p.byReference ? 'ByRef' : 'ByVal'} ${p.name} As ${p.type}`;
    if (!p.optional) return text;
    const value = p.type === 'Boolean' && p.fallback ? (p.fallback === '0' ? 'False' : 'True') : p.fallback;
    return value === undefined ? `Optional ${text}` : `Optional ${text} = ${value}`;
  });
  if (result === 'void') return `Sub ${name}(${list.join(', ')})`;
  return `${property ? 'Property Get' : 'Function'} ${name}(${list.join(', ')}) As ${TYPES[result] ?? fail(result)}`;
}

// ---- the contracts

// The text of consecutive comment lines; an empty comment line parts paragraphs, "- " begins an item.
const textOf = (lines) =>
  lines.map((line) => line.trim().replace(/^\/\/ ?/, '')).join('\n').trim();

function headerOf(name) {
  for (const folder of folders) {
    try {
      return { folder, header: read(`src/${folder}/${name}.h`), source: read(`src/${folder}/${name}.cpp`) };
    } catch (error) {
      if (error.code !== 'ENOENT') throw error;
    }
  }
  return fail(`no header of ${name}`);
}

// The comment at the head of the file, without the name it begins with.
function classContract(name, header) {
  const lines = header.split('\n');
  const text = textOf(lines.slice(0, lines.findIndex((line) => !line.startsWith('//'))));
  return text.replace(`${name}: `, '').replace(/^./, (c) => c.toUpperCase());
}

// The comment above each member; members without one share that of the member above them.
function memberContracts(header) {
  const contracts = {};
  let comment = [];
  let open = false;
  let group = '';
  for (const line of header.slice(header.indexOf('public:'), header.indexOf('private:')).split('\n')) {
    const text = line.trim();
    if (text.startsWith('//')) {
      if (!open) comment = [];
      open = true;
      comment.push(text);
      continue;
    }
    // A comment with an empty line behind it is one for the members that follow.
    if (text === '') {
      const text = open ? textOf(comment).replace(/^---- /, '') : '';
      group = text.includes('.') ? text : ''; // else a mere heading
      comment = [];
    }
    open = false;
    const member = /^(?!return)[\w:<>&* ]+?\b(\w+)\(/.exec(text)?.[1];
    if (member) contracts[member] = { group, text: textOf(comment) };
  }
  return contracts;
}

// ---- votes and messages, from the method's own lines

function bodyOf(source, name, member) {
  const start = source.search(new RegExp(`\\b${name}::${member}\\(`));
  if (start < 0) return '';
  const end = source.indexOf('\n}\n', start);
  return source.slice(start, end);
}

const FAILURES = {
  TrapFailures: 'A failure votes abort and gives the failure value; only a vote that itself fails rises.',
  NeverRaise: 'A failure votes abort and gives the failure value; nothing rises.',
  AbortOnFailure: 'A failure votes abort and rises.',
  LetFailuresRise: 'A failure rises.',
};

function votesOf(body) {
  const found = [];
  const end = body.search(/OpenDataContext|$/);
  if (/VoteAbort\(\)/.test(body.slice(0, end))) found.push('Votes abort at entry.');
  if (/frame_\.Refuse\(/.test(body)) found.push('A refusal votes abort.');
  if (/frame_\.WithoutVote\(/.test(body)) found.push('Can return without a vote.');
  const how = Object.keys(FAILURES).find((name) => body.includes(`frame_.${name}(`));
  if (how) found.push('Success votes complete.', FAILURES[how]);
  return found.join(' ');
}

function translations(path) {
  const texts = {};
  const unquote = (text) => [...text.matchAll(/"((?:[^"\\]|\\.)*)"/g)].map((m) => JSON.parse(`"${m[1]}"`)).join('');
  const entry = /^msgid ((?:"(?:[^"\\]|\\.)*"\s*)+)^msgstr ((?:"(?:[^"\\]|\\.)*"\s*)+)/gm;
  for (const [, key, value] of read(path).matchAll(entry)) texts[unquote(key)] = unquote(value);
  return texts;
}

// The Chinese source texts that stand in C++ text literals; literals in a row are one.
function sourceTexts(body, known) {
  const found = new Set();
  for (const [run] of body.matchAll(/(?:L"(?:[^"\\]|\\.)*"\s*)+/g)) {
    const text = [...run.matchAll(/L"((?:[^"\\]|\\.)*)"/g)].map((m) => m[1]).join('');
    for (const piece of text.split('^|^')) {
      const key = piece.replace('~$~', '').trim();
      if (key in known) found.add(key);
    }
  }
  return [...found];
}

// ---- the statement catalogue

// "Class.Method" -> its cases, each with a name and its statements' files.
function casesOf() {
  const cases = {};
  const folder = 'tests/src/statements';
  for (const file of readdirSync(folder).filter((name) => name.endsWith('Cases.cpp')).sort()) {
    const text = read(`${folder}/${file}`);
    const heads = [...text.matchAll(/\{L"(\w+)",\s*L"(\w+)",\s*"([^"]*)"/g)];
    heads.forEach((head, i) => {
      const entry = text.slice(head.index + head[0].length, heads[i + 1]?.index ?? text.length);
      const statements = [...entry.matchAll(/(?<!L)"(\w+\.[\w.]+)(?:\\t[^"]*)?"/g)].map((m) => m[1]);
      (cases[`${head[1]}.${head[2]}`] ??= []).push({ name: head[3], statements });
    });
  }
  return cases;
}

const statementText = (name) => read(`statements/${name}.sql`);

// The tables of the demo's schema, whose names the statements write in any case.
const tables = new Map();
for (const file of readdirSync('standin/database'))
  for (const [, name] of read(`standin/database/${file}`).matchAll(/\bCREATE\s+TABLE\s+(?:dbo\.)?\[?(\w+)/gi))
    tables.set(name.toLowerCase(), name);

const ALIASED = /(?:\bFROM|\bJOIN|,)\s+([\w#]+)\s+(?:AS\s+)?(\w+)/gi;
const WRITTEN = /\b(?:INSERT\s+(?:INTO\s+)?|DELETE\s+(?:FROM\s+)?|UPDATE\s+|INTO\s+)([\w#]+)/gi;
const READ = /\b(?:FROM|JOIN)\s+([\w#]+(?:\s+(?:AS\s+)?\w+)?(?:\s*,\s*[\w#]+(?:\s+\w+)?)*)/gi;

// The tables that statements read and write, without temporary ones.
function tablesOf(statements) {
  const reads = new Set();
  const writes = new Set();
  const add = (names, name) => {
    const table = tables.get(name.toLowerCase());
    if (table) names.add(table);
  };
  for (const text of statements.map(statementText)) {
    const plain = text.replace(/N?'(?:[^']|'')*'/g, "''").replace(/\bdbo\./gi, '');
    const aliases = Object.fromEntries([...plain.matchAll(ALIASED)].map((m) => [m[2].toLowerCase(), m[1]]));
    for (const [, name] of plain.matchAll(WRITTEN))
      add(writes, aliases[name.toLowerCase()] ?? name);
    for (const [, list] of plain.matchAll(READ))
      for (const part of list.split(',')) add(reads, part.trim().split(/\s+/)[0]);
  }
  const names = (set) => [...set].sort((a, b) => a.toLowerCase().localeCompare(b.toLowerCase(), 'en'));
  return { reads: names(reads), writes: names(writes) };
}

// ---- the pages

const cell = (text) => text.replaceAll('|', '\\|').replaceAll('\n', ' ');
const code = (text) => `\`${text}\``;

function messageTable(keys, english, traditional) {
  if (keys.length === 0) return '';
  const rows = keys.map((key) => `| ${cell(key)} | ${cell(traditional[key] ?? '')} | ${cell(english[key] ?? '')} |`);
  return `| 简体中文 | 繁體中文 | English |\n|---|---|---|\n${rows.join('\n')}\n`;
}

function methodPage(className, member, context) {
  const { contracts, source, cases, english, traditional } = context;
  const lines = [`## ${member.name}`, '', member.help, '', '```vb', signature(member), '```', ''];
  const contract = contracts[member.name] ?? fail(`no contract of ${className}.${member.name}`);
  if (contract.group) lines.push(contract.group, '');
  if (contract.text && contract.text !== contract.group) lines.push(contract.text, '');
  const body = bodyOf(source, className, member.name);
  const votes = votesOf(body);
  if (votes) lines.push(`**Votes.** ${votes}`, '');
  const examples = cases[`${className}.${member.name}`] ?? [];
  const statements = [...new Set(examples.flatMap((example) => example.statements))];
  const { reads, writes } = tablesOf(statements);
  if (reads.length) lines.push(`**Reads** ${reads.map(code).join(', ')}`, '');
  if (writes.length) lines.push(`**Writes** ${writes.map(code).join(', ')}`, '');
  const messages = messageTable(sourceTexts(body, english), english, traditional);
  if (messages) lines.push('**Messages**', '', messages);
  const told = new Set();
  for (const example of examples) {
    if (example.statements.length === 0) continue;
    lines.push(`**Statements${example.name ? `: ${example.name}` : ''}**`, '');
    for (const name of example.statements) {
      if (told.has(name)) {
        lines.push(`As above: ${code(name)}.`, '');
        continue;
      }
      told.add(name);
      lines.push('```sql', `-- ${name}`, statementText(name).replaceAll('\r\n', '\n').trimEnd(), '```', '');
    }
  }
  return lines.join('\n');
}

const idl = read('src/server/QorvaneMBomBill.idl');
const classes = classesOf(idl);
const english = translations('standin/resources/en.po');
const traditional = translations('standin/resources/zh_Hant.po');
const cases = casesOf();
mkdirSync(out, { recursive: true });

for (const { name, help, members } of classes) {
  const { folder, header, source } = headerOf(name);
  const context = { contracts: memberContracts(header), source, cases, english, traditional };
  const own = new Set(members.flatMap((member) => sourceTexts(bodyOf(source, name, member.name), english)));
  const others = sourceTexts(source, english).filter((key) => !own.has(key));
  const rest = messageTable(others, english, traditional);
  const page = [
    `# ${name}`, '', `${help}. ProgID \`QorvaneMBomBill.${name}\`; \`src/${folder}/${name}.h\`.`, '',
    classContract(name, header), '',
    '| method | |', '|---|---|',
    ...members.map((member) => `| [${member.name}](#${member.name.toLowerCase()}) | ${cell(member.help)} |`), '',
    ...members.map((member) => methodPage(name, member, context)),
    ...(rest ? ['## Other messages', '', 'Those that several methods share.', '', rest] : []),
  ];
  writeFileSync(`${out}/${name}.md`, `${page.join('\n').trimEnd()}\n`);
}

const index = [
  '# Reference', '',
  'Each method takes the connection descriptor first and is one unit of work. These pages are made by `tools/reference`',
  'from the type library, the contracts in the headers, the statement catalogue with its example values, and the',
  'messages; a test fails when they are not up to date.', '',
  '| class | |', '|---|---|', ...classes.map(({ name, help }) => `| [${name}](${name}.md) | ${help} |`), '',
];
writeFileSync(`${out}/README.md`, index.join('\n'));
