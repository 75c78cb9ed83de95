// The official client makes the calls that it reads from standard input, a list of names and arguments, one after the
// other; prints the text and the isError of each answer.
import { readFileSync } from 'node:fs';
import { Client } from '@modelcontextprotocol/sdk/client/index.js';
import { StdioClientTransport } from '@modelcontextprotocol/sdk/client/stdio.js';

const calls = JSON.parse(readFileSync(0, 'utf8'));
const client = new Client({ name: 'morning', version: '1' });
await client.connect(new StdioClientTransport({ command: process.argv[2], env: process.env, stderr: 'inherit' }));
const answers = [];
for (const [name, args] of calls) {
    const answer = await client.callTool({ name, arguments: args });
    answers.push([answer.content[0].text, answer.isError]);
}
await client.close();
console.log(JSON.stringify(answers));
