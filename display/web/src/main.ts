import palette from '../../palette.json';

document.title = palette.noPath;
