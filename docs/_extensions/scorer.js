// Puts what is called exactly as was asked for first: an operation, a failure, a model, or an option with or without its
// dashes. All else is as Sphinx has it.
let askedFor = "";
const listen = () => {
  const query = Search.query;
  Search.query = (text) => {
    askedFor = text.trim().replace(/\(\)$/, "").replace(/^pyzvr\./, "");
    query(text);
  };
};
// The search begins as soon as the page is there, so it must be listened to before that, whichever script comes first.
if (typeof Search !== "undefined") listen();
else document.addEventListener("DOMContentLoaded", listen);
var Scorer = {
  score: ([page, title, anchor, description, score]) => {
    if (description === null || askedFor === "") return score;
    const name = title.split(".").pop();
    const names = [name, name.replace(/^-+/, "")];
    if (names.includes(askedFor)) return score + 2000;
    return names.some((each) => each.toLowerCase() === askedFor.toLowerCase()) ? score + 1000 : score;
  },
  objNameMatch: 11,
  objPartialMatch: 6,
  objPrio: { 0: 15, 1: 5, 2: -5 },
  objPrioDefault: 0,
  title: 15,
  partialTitle: 7,
  term: 5,
  partialTerm: 2,
};
