// What a connected client sees of the server, as one object on standard output.
export async function visit(client, version) {
    const failure = async (call) => {
        try {
            await call;
            return null;
        } catch (error) {
            return error.code;
        }
    };
    const tools = (await client.listTools()).tools;
    const seen = {
        version,
        server: client.getServerVersion().name,
        instructions: client.getInstructions(),
        tools: tools.length,
        first: tools[0].name,
        executed: await client.callTool({ name: 'how_it_works', arguments: {} }),
        pending: await client.callTool({
            name: 'mail.send',
            arguments: { to: 'ann@example.org', subject: 'Minutes', body: 'Here they are.' },
        }),
        error: await client.callTool({ name: 'mail.send', arguments: {} }),
        unknown: await failure(client.callTool({ name: 'mail.fly', arguments: {} })),
    };
    await client.close();
    console.log(JSON.stringify(seen));
}
