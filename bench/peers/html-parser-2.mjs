// The tokenizer of htmlparser2 over the files of a list: reads all of them, three rounds of tokenizing, prints the last
// one's seconds of the processor, those of Node.js's own threads included.
//
//     node html-parser-2.mjs FOLDER LIST        FOLDER has node_modules; LIST names files, one a line, relative to its own folder
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { dirname, join, resolve } from "node:path";
import { pathToFileURL } from "node:url";

const ROUNDS = 3;
const PIECE = 65536;

const [folder, list] = process.argv.slice(2);
const entry = createRequire(join(resolve(folder), "any.js")).resolve("htmlparser2");
const { Tokenizer } = await import(pathToFileURL(entry));

// It takes strings: how bytes become strings is left out of its time.
const documents = readFileSync(list, "utf8").trim().split("\n").map((path) => {
    const text = readFileSync(join(dirname(list), path), "utf8");
    const pieces = [];
    for (let begin = 0; begin < text.length; begin += PIECE)
        pieces.push(text.slice(begin, begin + PIECE));
    return pieces;
});

let counted = 0;
const count = (begin, end) => {
    counted += end - begin;
};
const countOne = () => {
    ++counted;
};
const callbacks = {
    onattribdata: count,
    onattribentity: countOne,
    onattribend: countOne,
    onattribname: count,
    oncdata: count,
    onclosetag: count,
    oncomment: count,
    ondeclaration: count,
    onend: countOne,
    onopentagend: countOne,
    onopentagname: count,
    onprocessinginstruction: count,
    onselfclosingtag: countOne,
    ontext: count,
    ontextentity: countOne,
};

let seconds = 0;
for (let round = 0; round < ROUNDS; ++round) {
    const begin = process.cpuUsage();
    for (const pieces of documents) {
        const tokenizer = new Tokenizer({ decodeEntities: true }, callbacks);
        for (const piece of pieces)
            tokenizer.write(piece);
        tokenizer.end();
    }
    const used = process.cpuUsage(begin);
    seconds = (used.user + used.system) / 1e6;
}
if (counted === 0)
    throw new Error("nothing was reported");
console.log(seconds);
