// The rewriting stream of parse5 over the files of a list, with an attribute set in every start tag: reads all of them, three rounds, prints
// the last one's seconds of the processor, those of Node.js's own threads included.
//
//     node parse5-rewriting-stream.mjs FOLDER LIST        FOLDER has node_modules; LIST names files, one a line, relative to its own folder
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { dirname, join, resolve } from "node:path";
import { pathToFileURL } from "node:url";

const ROUNDS = 3;
const PIECE = 65536;

const [folder, list] = process.argv.slice(2);
const entry = createRequire(join(resolve(folder), "any.js")).resolve("parse5-html-rewriting-stream");
const { RewritingStream } = await import(pathToFileURL(entry));

// It takes strings: how bytes become strings is left out of its time.
const documents = readFileSync(list, "utf8").trim().split("\n").map((path) => {
    const text = readFileSync(join(dirname(list), path), "utf8");
    const pieces = [];
    for (let begin = 0; begin < text.length; begin += PIECE)
        pieces.push(text.slice(begin, begin + PIECE));
    return pieces;
});

let tags = 0;
let written = 0;

function rewrite(pieces) {
    return new Promise((done, failed) => {
        const stream = new RewritingStream();
        stream.on("startTag", (tag) => {
            const attribute = tag.attrs.find(({ name }) => name === "data-x");
            if (attribute === undefined)
                tag.attrs.push({ name: "data-x", value: "y" });
            else
                attribute.value = "y";
            ++tags;
            stream.emitStartTag(tag);
        });
        stream.on("data", (text) => {
            written += text.length;
        });
        stream.on("end", done);
        stream.on("error", failed);
        for (const piece of pieces)
            stream.write(piece);
        stream.end();
    });
}

let seconds = 0;
for (let round = 0; round < ROUNDS; ++round) {
    const begin = process.cpuUsage();
    for (const pieces of documents)
        await rewrite(pieces);
    const used = process.cpuUsage(begin);
    seconds = (used.user + used.system) / 1e6;
}
if (tags === 0 || written === 0)
    throw new Error("nothing was rewritten");
console.log(seconds);
